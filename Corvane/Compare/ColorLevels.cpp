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

std::size_t FirstOf(const std::bitset<65536>& set) {
    std::size_t first = 0;
    while (first + 1 < set.size() && !set[first]) ++first;
    return first;
}

std::size_t LastOf(const std::bitset<65536>& set) {
    std::size_t last = set.size() - 1;
    while (last > 0 && !set[last]) --last;
    return last;
}

} // namespace

void ColorLevels::Add(int plane, double expected, std::uint32_t least, std::uint32_t most) {
    Plane& levels = mPlanes[static_cast<std::size_t>(plane)];
    levels.found.set(std::min(least, 65535u));
    levels.found.set(std::min(most, 65535u));
    levels.expected.set(static_cast<std::size_t>(std::clamp(std::round(expected), 0.0, 65535.0)));
}

std::optional<ColorLevels::Lost> ColorLevels::Worst() const {
    constexpr std::size_t kFewest = 16;
    std::optional<Lost> worst;
    for (int plane = 0; plane < 4; ++plane) {
        const Plane& levels = mPlanes[static_cast<std::size_t>(plane)];
        const Counts found = CountsOf(levels.found), expected = CountsOf(levels.expected);
        if (expected.levels < kFewest || found.levels < 3 || found.levels * 2 > expected.levels) continue;
        // Noise fills in levels side by side; lost bits leave gaps between all of them.
        if (found.neighbors * 20 > found.levels || expected.neighbors * 2 < expected.levels) continue;
        const auto span = static_cast<double>(LastOf(levels.found) - FirstOf(levels.found));
        const Lost lost{plane, found.levels, expected.levels, span / static_cast<double>(found.levels - 1)};
        if (!worst || lost.step > worst->step) worst = lost;
    }
    return worst;
}

} // namespace corvane
