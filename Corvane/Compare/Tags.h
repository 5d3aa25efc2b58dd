#pragma once

#include <optional>
#include <vector>

#include "Finding.h"
#include "Video.h"

namespace corvane {

/// What the pictures of a video were measured to be. None where that can't be told, and where a finding of
/// another kind tells it already.
struct Measured {
    std::optional<PixelAspect> aspect;
    std::optional<FieldOrder> order;
    std::optional<Rate> rate;
    std::optional<int> matrix; ///< code point of ITU-T H.273
    std::optional<bool> fullRange;
};

/// Findings of the kinds tags.*: where what the video tells contradicts its pictures. What it does not tell
/// contradicts nothing. `tags` are those of its pictures. Throws `std::bad_alloc`. Any thread.
std::vector<Finding> TagFindings(const VideoFacts& video, const VideoTags& tags, const Measured& measured);

} // namespace corvane
