/// Ready pictures of the printed characters. Private to the raster service.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "RasterkitPixel.h"
#include "RasterkitStrokes.h"

namespace corvane::raster {

/// From one character to the next, in pixels, when a character is `height` pixels high.
constexpr std::uint64_t GlyphAdvance(std::uint32_t height) {
    constexpr std::uint64_t kAdvance = 76; // grid units
    return (std::uint64_t{height} * kAdvance + kGlyphHeight / 2) / kGlyphHeight;
}

/// The pixels for coverages 0 (the box) to 255 (the character) in one format.
using Shades = std::array<Pattern, 256>;

/// All shades of a concrete format. Any thread.
Shades MakeShades(RK_PixelFormat format);

/// Shade 0 alone. Any thread.
Pattern BoxShade(RK_PixelFormat format);

/// A character on its box, with the gap to the next one: rows of `GlyphAdvance(height)` pixels without
/// padding, in the format that it was made for.
struct GlyphPicture {
    std::size_t rowBytes = 0; ///< from one row to the next
    std::vector<std::byte> pixels;
};

/// Whether a character of that many pixels' height is too large to be kept as a picture. Any thread.
bool IsGlyphTooLarge(std::uint32_t height, RK_PixelFormat format);

/// The picture of a character, made on first use and kept for the next ones. The sum of what is kept is
/// bounded; the oldest go first. Steady use takes a shared lock and allocates nothing. `glyph` is one of the
/// characters of RasterkitStrokes.h, and its height must not be too large. Throws `std::bad_alloc`. Any
/// thread.
std::shared_ptr<const GlyphPicture> GetGlyphPicture(std::uint32_t glyph, std::uint32_t height,
                                                    RK_PixelFormat format);

} // namespace corvane::raster
