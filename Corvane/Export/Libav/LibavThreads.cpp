#include "LibavThreads.h"

#include <algorithm>
#include <latch>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include <unistd.h>

namespace corvane {
namespace {

struct Row {
    std::string_view encoder;
    unsigned perProcessor, beside; // threads that it may start
    unsigned few;                  // or so many, with the parameters
    const char* option;
    const char* parameters;
};

// SVT-AV1 1.4 starts 84 threads on 2 processors, 137 on 4, 329 on 8, 424 on 16, 820 on 64. The other encoders
// that were tried start no more than x265 may.
constexpr Row kRows[] = {{"libsvtav1", 48, 0, 16, "svtav1-params", "lp=1"},
                         {"libx265", 1, 16, 1, "x265-params", "pools=none:frame-threads=1"}};
constexpr Row kOthers{"", 1, 16, 0, "", ""};
constexpr unsigned kMost = 1024;

const Row& RowOf(const AVCodec& encoder) {
    const auto* const row = std::ranges::find(kRows, std::string_view(encoder.name), &Row::encoder);
    return row != std::end(kRows) ? *row : kOthers;
}

} // namespace

unsigned MostThreads(const AVCodec& encoder, bool few) {
    const Row& row = RowOf(encoder);
    const auto processors = static_cast<unsigned>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
    return few ? row.few : std::min(row.perProcessor * processors + row.beside, kMost);
}

void KeepToFewThreads(CodecChoice& choice) {
    choice.options["threads"] = "1";
    const Row& row = RowOf(*choice.codec);
    if (row.few == 0) return;
    std::string& option = choice.options[row.option];
    option += (option.empty() ? "" : ":") + std::string(row.parameters); // the last one counts
}

bool CanStartThreads(unsigned count) {
    std::latch end(1);
    std::vector<std::jthread> threads; // joined when it goes
    threads.reserve(count);
    try {
        while (threads.size() < count) threads.emplace_back([&end] { end.wait(); });
    } catch (const std::system_error&) {
        // Those that run are ended all the same.
    } catch (...) {
        end.count_down();
        throw;
    }
    end.count_down();
    return threads.size() == count;
}

} // namespace corvane
