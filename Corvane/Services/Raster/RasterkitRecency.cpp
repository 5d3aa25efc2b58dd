#include "RasterkitRecency.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <fstream>

namespace corvane::raster {
namespace {

// Where a fill began, and how many bytes this process had filled by then. The two are not written together:
// the worst that comes of it is a wrong estimate.
struct Beginning {
    std::atomic<const std::byte*> start{nullptr};
    std::atomic<std::uint64_t> filled{0};
};

// Enough for the frames of a pool. Those of which nothing is known are taken for cold.
std::array<Beginning, 256> gBeginnings;
std::atomic<std::uint64_t> gFilled{0};

// A fill that begins at most this far behind the last one's beginning belongs to the same frame.
constexpr std::ptrdiff_t kNear = 256 * 1024;

struct CurrentFrame {
    const std::byte* last;
    std::size_t bytes; // not yet counted
    bool isCached;
};
[[gnu::tls_model("initial-exec")]] constinit thread_local CurrentFrame tFrame{};

// The cores that share the last-level cache share it with whatever else runs on them.
std::uint64_t CacheShare() {
    constexpr std::uint64_t kUnknown = 8 << 20;
    std::ifstream file("/sys/devices/system/cpu/cpu0/cache/index3/size");
    std::uint64_t kibibytes = 0;
    return file >> kibibytes ? kibibytes * 1024 / 2 : kUnknown;
}

} // namespace

bool IsProbablyCached(const std::byte* start, std::size_t bytes) {
    CurrentFrame& frame = tFrame;
    const std::ptrdiff_t behind = start - frame.last;
    frame.last = start;
    if (behind > 0 && behind <= kNear) {
        frame.bytes += bytes;
        return frame.isCached;
    }
    static const std::uint64_t share = CacheShare();
    const std::uint64_t filled = gFilled.fetch_add(frame.bytes, std::memory_order_relaxed) + frame.bytes;
    Beginning& beginning = gBeginnings[reinterpret_cast<std::uintptr_t>(start) / 4096 % gBeginnings.size()];
    frame.isCached = beginning.start.load(std::memory_order_relaxed) == start &&
                     filled - beginning.filled.load(std::memory_order_relaxed) <= share;
    beginning.start.store(start, std::memory_order_relaxed);
    beginning.filled.store(filled, std::memory_order_relaxed);
    frame.bytes = bytes;
    return frame.isCached;
}

} // namespace corvane::raster
