#include "PictureScale.h"

#include <algorithm>

namespace corvane::desktop {

ScaleAxis::ScaleAxis(std::uint32_t extent, std::uint32_t step, std::uint32_t lines, int result, int begin,
                     int end) {
    // In units of which a row of the frame has `result` and a device pixel `extent`, all edges are whole.
    const std::int64_t unit = std::int64_t{step} * result;
    mStarts.reserve(static_cast<std::size_t>(end - begin) + 1);
    for (std::int64_t at = begin; at < end; ++at) {
        mStarts.push_back(mTaps.size());
        Add(at * extent, (at + 1) * extent, unit, lines);
    }
    mStarts.push_back(mTaps.size());
}

void ScaleAxis::Add(std::int64_t low, std::int64_t high, std::int64_t unit, std::int64_t lines) {
    const std::int64_t first = std::min(low / unit, lines - 1);
    const std::int64_t last = std::min((high - 1) / unit, lines - 1);
    std::int64_t given = 0;
    for (std::int64_t line = first; line <= last; ++line) {
        const std::int64_t covered = (line == last ? high : (line + 1) * unit) - low;
        const std::int64_t whole = (covered * kWhole + (high - low) / 2) / (high - low);
        if (whole > given || line == first || line == last)
            mTaps.push_back({static_cast<std::uint32_t>(line), static_cast<std::uint16_t>(whole - given)});
        given = whole;
    }
}

std::span<const ScaleAxis::Tap> ScaleAxis::TapsOf(int index) const {
    const auto at = static_cast<std::size_t>(index);
    return std::span(mTaps).subspan(mStarts[at], mStarts[at + 1] - mStarts[at]);
}

} // namespace corvane::desktop
