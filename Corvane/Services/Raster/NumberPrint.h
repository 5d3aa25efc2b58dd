/// Where a printed number lies: for the print itself, and for whoever reads it again.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Rasterkit.h"

namespace corvane::raster {

// Positions are signed and 64 bits wide: a print may begin and end anywhere outside the frame.
using Position = std::int64_t;

/// 8-bit codes of gamma-coded gray: clear of the ends of the range, so that the box shows on black and white
/// alike.
inline constexpr float kBoxGray = 24.0f;
inline constexpr float kGlyphGray = 240.0f;

/// A rectangle of pixels; the right column and the bottom row are outside.
struct Rectangle {
    Position left, top, right, bottom;

    bool IsEmpty() const { return left >= right || top >= bottom; }
};

/// Where everything goes, in pixels of the frame, before clipping.
struct PrintLayout {
    std::uint32_t glyphHeight;
    Position advance; ///< from one character to the next
    Rectangle glyphs; ///< from the first character's corner to the last one's end, its gap included
    Rectangle box;
};

/// The layout of `count` characters, at least 1, printed by `RK_PrintNum` with that size (above 0) and
/// position into a frame of that many pixels. Any thread.
PrintLayout LayOutPrint(std::uint32_t width, std::uint32_t height, float size, RK_Point position,
                        std::size_t count);

} // namespace corvane::raster
