#include "NumberPrint.h"

#include <algorithm>
#include <cmath>

#include "RasterkitGlyphs.h"

namespace corvane::raster {
namespace {

Position Units(std::uint32_t units, std::uint32_t glyphHeight) {
    return (Position{units} * glyphHeight + kGlyphHeight / 2) / kGlyphHeight;
}

// Rounds a share of a length to pixels, half up, and holds it to a range in which sums can't overflow.
Position Pixels(float share, std::uint32_t length) {
    constexpr double kFar = 1 << 30;
    const double pixels = static_cast<double>(share) * length + 0.5;
    if (pixels != pixels) return 0;
    return static_cast<Position>(std::floor(std::clamp(pixels, -kFar, kFar)));
}

} // namespace

PrintLayout LayOutPrint(std::uint32_t width, std::uint32_t height, float size, RK_Point position,
                        std::size_t count) {
    constexpr std::uint32_t kPadding = 20; // grid units
    const auto glyphHeight = static_cast<std::uint32_t>(std::max<Position>(Pixels(size, height), 1));
    const Position x = Pixels(position.x, width);
    const Position y = Pixels(position.y, height);
    const Position padding = Units(kPadding, glyphHeight);
    const auto advance = static_cast<Position>(GlyphAdvance(glyphHeight));
    const Position last = x + static_cast<Position>(count - 1) * advance;
    const Position boxEnd = last + Units(kGlyphWidth, glyphHeight) + padding;
    const Rectangle glyphs{x, y, std::min(last + advance, boxEnd), y + glyphHeight};
    return {glyphHeight, advance, glyphs, {x - padding, y - padding, boxEnd, glyphs.bottom + padding}};
}

} // namespace corvane::raster
