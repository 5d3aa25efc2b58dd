/// The shapes of the printed characters: for the print, and for whoever reads it again.
///
/// A character is drawn on a grid of 100 units a height and 60 a width, from line segments and arcs of one
/// weight with round ends. Only operations that IEEE 754 rounds exactly are used: the coverage is the same on
/// every machine.
#pragma once

#include <cstdint>
#include <span>

namespace corvane::raster {

inline constexpr std::uint32_t kGlyphHeight = 100; ///< grid units
inline constexpr std::uint32_t kGlyphWidth = 60;   ///< grid units, the same for all characters

/// The characters: 0 to 9 are the digits.
inline constexpr std::uint32_t kMinusGlyph = 10;
inline constexpr std::uint32_t kGlyphCount = 11; ///< characters are less than this

/// The coverage of a stretch of one row of pixels: `coverage[i]` becomes 0 (outside) to 255 (inside) for the
/// pixel at column `firstColumn + i` of `row`. Both count from the character's top-left corner; `height` is
/// the height of the character in pixels, above 0. Any thread.
void CoverRow(std::uint32_t glyph, std::uint32_t height, std::uint32_t row, std::uint32_t firstColumn,
              std::span<std::uint8_t> coverage);

} // namespace corvane::raster
