#include "PixelReadout.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

#include "Export/Picture/PackedReader.h"
#include "Export/Picture/RowScan.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane::desktop {

namespace {

/// The letters of a pixel's components in their order in memory.
std::string Letters(RK_PixelFormat format) {
    std::string letters = (format & kRK_YCbCr) ? "VUYA" : "BGRA";
    if (format & kRK_AlphaFirst) std::ranges::reverse(letters);
    if (format & kRK_AlphaIgnored) std::ranges::replace(letters, 'A', 'X');
    return letters;
}

std::string Components(const std::byte* pixel, RK_PixelFormat format) {
    std::string words;
    const std::string letters = Letters(format);
    for (std::size_t i = 0; i < letters.size(); ++i) {
        if (i != 0) words += ' ';
        if (format & kRK_Float) {
            float value;
            std::memcpy(&value, pixel + i * sizeof value, sizeof value);
            words += fmt::format("{} {}", letters[i], value);
        } else {
            words += fmt::format("{} {}", letters[i], std::to_integer<int>(pixel[i]));
        }
    }
    return words;
}

std::string NameOf(CvPixelFormat format) {
    constexpr std::string_view kPrefix = "CvPixelFormat_";
    std::string characters;
    for (int shift = 0; shift < 32; shift += 8) characters += static_cast<char>(format >> shift);
    const auto table = PixelFormatTable();
    const auto row = std::ranges::find(table, format, &PixelFormatRow::code);
    if (row == table.end()) return fmt::format("0x{:08x}", format);
    std::string_view name = row->name;
    if (name.starts_with(kPrefix)) name.remove_prefix(kPrefix.size());
    return fmt::format("{} ({})", name, characters);
}

std::string RGB(const Clip& clip, const FrameView& pixel) {
    StreamFacts facts = FactsOf(clip, 1);
    facts.size = {1, 1};
    PackedReader reader(facts, {{0, 1, 2, 3}, 3, 8, false});
    reader.Begin(pixel);
    std::byte rgb[3];
    reader.Read(0, 1, rgb);
    const auto part = [&](int i) { return std::to_integer<int>(rgb[i]); };
    return fmt::format("{} {} {}", part(0), part(1), part(2));
}

} // namespace

PixelWords DescribePixel(const Clip& clip, const Frame& frame, std::uint32_t x, std::uint32_t y) {
    FrameView pixel = frame.View();
    pixel.pixels = RowOf(frame.View(), y) + std::size_t{x} * BytesPerPixel(pixel.format);
    pixel.width = pixel.height = 1;
    return {Components(pixel.pixels, pixel.format), NameOf(frame.Format()), RGB(clip, pixel)};
}

} // namespace corvane::desktop
