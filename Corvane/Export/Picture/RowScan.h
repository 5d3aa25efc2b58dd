#pragma once

#include <cstdint>

#include "Engine/Frame.h"

namespace corvane {

/// A rectangle of pixels; the right column and the bottom row are outside.
struct Box {
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t right = 0;
    std::uint32_t bottom = 0;

    bool Empty() const { return left >= right || top >= bottom; }
    std::uint32_t Width() const { return right - left; }
    std::uint32_t Height() const { return bottom - top; }
    /// Whether `other` is inside; an empty one always is.
    bool Contains(const Box& other) const {
        return other.Empty() ||
               (left <= other.left && top <= other.top && right >= other.right && bottom >= other.bottom);
    }
};

/// Whether all pixels of row `y`, which must be inside the frame, are alike byte for byte. Any thread.
bool RowIsUniform(const FrameView& frame, std::uint32_t y);

/// The smallest rectangle that holds every pixel which differs from the first pixel of its row. Generated
/// frames are rows of one color with at most a number on them, so that converters work on little more than
/// this box. Empty if every row is of one color. Any thread.
Box FindBox(const FrameView& frame);

} // namespace corvane
