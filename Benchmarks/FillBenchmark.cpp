// RK_FillWithColor beside the plain ways of writing the same bytes in the same order, all in turn in one run:
// every order of filling, two sizes of frame and of pixel, and one to sixteen buffers in turn. The counter
// `of_best` is the fill's speed, if that of the best plain way is 1; those of the ways are theirs, if that of
// the fill is 1.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <sys/mman.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "PlainFills.h"
#include "Rasterkit.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Size {
    const char* name;
    std::uint32_t width, rows, pixelBytes;
};

struct Free {
    void operator()(std::byte* memory) const { std::free(memory); }
};
using Buffer = std::unique_ptr<std::byte, Free>;

/// A buffer of huge pages, each of them touched.
Buffer MakeBuffer(std::size_t bytes) {
    constexpr std::size_t kPage = std::size_t{2} << 20;
    const std::size_t whole = (bytes + kPage - 1) / kPage * kPage;
    Buffer buffer(static_cast<std::byte*>(std::aligned_alloc(kPage, whole)));
    ::madvise(buffer.get(), whole, MADV_HUGEPAGE);
    std::memset(buffer.get(), 1, whole);
    return buffer;
}

void FillByService(const Size& size, FillShape shape, std::byte* base) {
    static const float color[4] = {0.1f, 0.3f, 0.9f, 0.7f};
    const RK_PixelFormat format = kRK_4444 | (size.pixelBytes == 4 ? 0 : kRK_Float);
    const auto rowBytes = static_cast<std::int32_t>(size.width * size.pixelBytes);
    const auto fill = [&](std::uint32_t first, std::int32_t step, std::uint32_t rows) {
        RK_FillWithColor(base + std::ptrdiff_t{rowBytes} * first, step, size.width, rows, format, color,
                         kRK_FillReplace);
    };
    if (shape == FillShape::kSolid) return fill(0, rowBytes, size.rows);
    if (shape == FillShape::kFields)
        return fill(0, 2 * rowBytes, size.rows / 2), fill(1, 2 * rowBytes, size.rows / 2);
    for (std::uint32_t row = 0; row < size.rows; ++row) fill(row, rowBytes, 1);
}

void Fill(benchmark::State& state, const Size& size, FillShape shape, std::size_t count) {
    const std::size_t rowBytes = std::size_t{size.width} * size.pixelBytes;
    auto ways = PlainFills({shape, rowBytes, size.rows, size.pixelBytes});
    ways.emplace_back([&](std::byte* base) { FillByService(size, shape, base); });
    std::vector<Buffer> buffers;
    while (buffers.size() < count) buffers.push_back(MakeBuffer(rowBytes * size.rows));
    const std::size_t frames = std::max<std::size_t>(count, 8);
    std::vector<std::vector<double>> seconds(ways.size());
    for (auto _ : state) {
        for (std::size_t way = 0; way < ways.size(); ++way) {
            // The caches hold what this way leaves there, not what the one before it did.
            for (const Buffer& buffer : buffers) ways[way](buffer.get());
            const auto start = Clock::now();
            for (std::size_t i = 0; i < frames; ++i) ways[way](buffers[i % count].get());
            const std::chrono::duration<double> time = Clock::now() - start;
            seconds[way].push_back(time.count() / static_cast<double>(frames));
        }
        state.SetIterationTime(seconds.back().back());
    }
    const double ours = Median(seconds.back());
    seconds.pop_back();
    double best = Median(seconds.front());
    for (std::vector<double>& times : seconds) best = std::min(best, Median(times));
    for (std::size_t way = 0; way < seconds.size(); ++way)
        state.counters[kPlainWays[way]] = ours / Median(seconds[way]);
    state.counters["of_best"] = best / ours;
    state.counters["GB/s"] = static_cast<double>(rowBytes * size.rows) / ours / 1e9;
}

void RegisterAll() {
    for (const Size& size : {Size{"1080p/8u", 1920, 1080, 4}, Size{"2160p/8u", 3840, 2160, 4},
                             Size{"1080p/32f", 1920, 1080, 16}, Size{"2160p/32f", 3840, 2160, 16}})
        for (const std::size_t count : {1u, 2u, 4u, 8u, 16u})
            for (const auto& [word, shape] : {std::pair{"solid", FillShape::kSolid},
                                              {"fields", FillShape::kFields},
                                              {"rows", FillShape::kRows}}) {
                const std::string name = fmt::format("Fill/{}/{}/buffers:{}", size.name, word, count);
                benchmark::RegisterBenchmark(
                    name.c_str(),
                    [=, shape = shape](benchmark::State& state) { Fill(state, size, shape, count); })
                    ->UseManualTime()
                    ->Unit(benchmark::kMicrosecond)
                    ->Iterations(7);
            }
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
