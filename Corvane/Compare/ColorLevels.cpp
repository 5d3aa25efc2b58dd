#include "ColorLevels.h"

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

// How many levels are set, and how many of them have the level above set, too.
struct Counts {
    std::size_t levels = 0, neighbors = 0;
};

Counts CountsOf(const std::bitset<65536>& set) {
    return {set.count(), (set & (set >> 1)).count()};
}

} // namespace

void ColorLevels::Add(int plane, double expected, std::uint32_t least, std::uint32_t most) {
    Plane& counts = mPlanes[static_cast<std::size_t>(plane)];
    ++counts.rows;
    if (least != most || least > 65535) return;
    ++counts.flat;
    counts.found.set(least);
    counts.expected.set(static_cast<std::size_t>(std::clamp(std::round(expected), 0.0, 65535.0)));
}

std::optional<ColorLevels::Lost> ColorLevels::Worst() const {
    // A codec at a low rate skips levels, too, but those that it has lie side by side here and there.
    constexpr std::size_t kFewest = 8;
    std::optional<Lost> worst;
    for (int plane = 0; plane < 4; ++plane) {
        const Plane& counts = mPlanes[static_cast<std::size_t>(plane)];
        const Counts found = CountsOf(counts.found), expected = CountsOf(counts.expected);
        if (counts.flat * 10 < counts.rows * 9 || found.levels < kFewest) continue;
        if (found.levels * 2 > expected.levels || found.neighbors * 20 > found.levels) continue;
        const Lost lost{plane, found.levels, expected.levels};
        if (!worst || lost.found * worst->expected < worst->found * lost.expected) worst = lost;
    }
    return worst;
}

} // namespace corvane
