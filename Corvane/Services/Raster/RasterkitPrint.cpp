#include "Rasterkit.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

#include "NumberPrint.h"
#include "PixelFormats.h"
#include "RasterkitGlyphs.h"
#include "RasterkitRows.h"

namespace corvane::raster {
namespace {

struct Picture {
    std::byte* base;
    std::ptrdiff_t rowBytes;
    RK_PixelFormat format;
    std::uint32_t width, height;

    std::size_t PixelSize() const { return BytesPerPixel(format); }
    std::byte* At(Position x, Position y) const {
        return base + y * rowBytes + x * static_cast<Position>(PixelSize());
    }
    Rectangle Clip(const Rectangle& r) const {
        return {std::max<Position>(r.left, 0), std::max<Position>(r.top, 0),
                std::min<Position>(r.right, width), std::min<Position>(r.bottom, height)};
    }
};

// The digits cover their part of the box, so only the frame around them is filled.
void FillFrame(const Picture& picture, const PrintLayout& layout) {
    const Pattern shade = BoxShade(picture.format);
    const auto& [box, glyphs] = std::pair(layout.box, layout.glyphs);
    const std::array<Rectangle, 4> parts{{
        {box.left, box.top, box.right, glyphs.top},
        {box.left, glyphs.top, glyphs.left, glyphs.bottom},
        {glyphs.right, glyphs.top, box.right, glyphs.bottom},
        {box.left, glyphs.bottom, box.right, box.bottom},
    }};
    for (const Rectangle& part : parts) {
        const Rectangle r = picture.Clip(part);
        if (r.IsEmpty()) continue;
        FillRowsCached(picture.At(r.left, r.top), picture.rowBytes,
                       static_cast<std::size_t>(r.right - r.left) * picture.PixelSize(),
                       static_cast<std::uint32_t>(r.bottom - r.top), shade);
    }
}

// `cell` is the character's place, `visible` what of it lies in the frame.
void CopyGlyph(const Picture& picture, std::uint32_t glyph, const PrintLayout& layout, const Rectangle& cell,
               const Rectangle& visible) {
    const auto source = GetGlyphPicture(glyph, layout.glyphHeight, picture.format);
    const auto bytes = static_cast<std::size_t>(visible.right - visible.left) * picture.PixelSize();
    const std::byte* from = source->pixels.data() +
                            static_cast<std::size_t>(visible.top - cell.top) * source->rowBytes +
                            static_cast<std::size_t>(visible.left - cell.left) * picture.PixelSize();
    std::byte* to = picture.At(visible.left, visible.top);
    for (Position row = visible.top; row < visible.bottom; ++row) {
        std::memcpy(to, from, bytes);
        from += source->rowBytes;
        to += picture.rowBytes;
    }
}

// Draws a character that is too large to be kept as a picture: what is seen of it, a stretch of pixels at a
// time.
void DrawGlyph(const Picture& picture, std::uint32_t glyph, const PrintLayout& layout, const Rectangle& cell,
               const Rectangle& visible) {
    const Shades shades = MakeShades(picture.format);
    std::array<std::uint8_t, 1024> stretch;
    for (Position row = visible.top; row < visible.bottom; ++row) {
        for (Position column = visible.left; column < visible.right;) {
            const Position count = std::min<Position>(visible.right - column, stretch.size());
            const std::span coverage(stretch.data(), static_cast<std::size_t>(count));
            CoverRow(glyph, layout.glyphHeight, static_cast<std::uint32_t>(row - cell.top),
                     static_cast<std::uint32_t>(column - cell.left), coverage);
            std::byte* to = picture.At(column, row);
            for (const std::uint8_t level : coverage) {
                std::memcpy(to, &shades[level], picture.PixelSize());
                to += picture.PixelSize();
            }
            column += count;
        }
    }
}

void Print(const Picture& picture, std::string_view text, const PrintLayout& layout) {
    FillFrame(picture, layout);
    Rectangle cell = layout.glyphs;
    for (const char character : text) {
        cell.right = std::min(cell.left + layout.advance, layout.glyphs.right);
        const Rectangle visible = picture.Clip(cell);
        const std::uint32_t glyph =
            character == '-' ? kMinusGlyph : static_cast<std::uint32_t>(character - '0');
        if (!visible.IsEmpty()) {
            const auto put = IsGlyphTooLarge(layout.glyphHeight, picture.format) ? DrawGlyph : CopyGlyph;
            put(picture, glyph, layout, cell, visible);
        }
        cell.left += layout.advance;
    }
}

} // namespace
} // namespace corvane::raster

void RK_PrintNum(void* base, std::int32_t rowBytes, RK_PixelFormat format, std::uint32_t width,
                 std::uint32_t height, std::int32_t number, float size, RK_Point position,
                 std::int32_t style) {
    using namespace corvane::raster;
    corvane::RequireConcrete(format);
    if (style != kRK_PrintBoxed)
        throw std::invalid_argument(fmt::format("Print style {} is not known.", style));
    if (!(size > 0.0f)) return;

    std::array<char, 12> buffer;
    const auto written = std::to_chars(buffer.begin(), buffer.end(), number);
    const std::string_view text(buffer.begin(), written.ptr);
    const Picture picture{static_cast<std::byte*>(base), rowBytes, format, width, height};
    Print(picture, text, LayOutPrint(width, height, size, position, text.size()));
}
