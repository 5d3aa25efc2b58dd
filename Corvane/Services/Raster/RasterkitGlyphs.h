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
Shades MakeShades(RK_PixelFormat format);
/// Shade 0 alone.
Pattern BoxShade(RK_PixelFormat format);

/// A character on its box, with the gap to the next one: rows of `GlyphAdvance(height)` pixels without
/// padding.
struct GlyphPicture {
    std::size_t rowBytes = 0;
    std::vector<std::byte> pixels;
};

/// True where a picture of that height is too large to be kept.
bool IsGlyphTooLarge(std::uint32_t height, RK_PixelFormat format);

/// The picture of a character, made on first use and kept for the next ones. The sum of what is kept is
/// bounded; the oldest go first. Steady use takes a shared lock and allocates nothing. Any thread.
std::shared_ptr<const GlyphPicture> GetGlyphPicture(std::uint32_t glyph, std::uint32_t height,
                                                    RK_PixelFormat format);

} // namespace corvane::raster
