#include "FormatNames.h"

#include <algorithm>

#include <fmt/format.h>

#include "Services/Raster/PixelFormats.h"

namespace corvane::commandline {

std::string FormatName(CvPixelFormat format) {
    const auto table = PixelFormatTable();
    const auto row = std::ranges::find(table, format, &PixelFormatRow::code);
    return row != table.end() ? row->name : "";
}

std::string FormatCharacters(CvPixelFormat format) {
    std::string characters;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto character = static_cast<unsigned char>(format >> shift);
        characters += character > 0x20 && character < 0x7F ? static_cast<char>(character) : '.';
    }
    return characters;
}

std::string FormatHex(CvPixelFormat format) {
    return fmt::format("0x{:08x}", format);
}

std::string FormatNameOrHex(CvPixelFormat format) {
    const std::string name = FormatName(format);
    return name.empty() ? FormatHex(format) : name;
}

} // namespace corvane::commandline
