/// What a pixel is: the host's formats, one row each, and all that follows from a row.
///
/// A new format takes a row here, its code in CvPixelFormats.h and a choice in the plug-in's dialog;
/// everything else asks the functions below. All of them may be called from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "CvPixelFormats.h"

namespace corvane {

/// One pixel format of the host. No two rows share a code or a raster code.
struct PixelFormatRow {
    CvPixelFormat code;
    std::string_view name; ///< the constant's own name, `CvPixelFormat_` included
    RK_PixelFormat raster; ///< what the raster service calls it
};

/// All 48 formats, in the order in which the host lists them. Lives as long as the process.
std::span<const PixelFormatRow> PixelFormatTable();

/// The row of a code; null if the host has no such format.
const PixelFormatRow* FindPixelFormat(CvPixelFormat code);

/// The row of a raster code; null if no format of the host has it.
const PixelFormatRow* FindPixelFormatOf(RK_PixelFormat raster);

/// The raster code of a format. Throws `std::invalid_argument`, whose text gives the code, if the host has no
/// such format.
RK_PixelFormat RasterFormatOf(CvPixelFormat code);

/// Whether a raster code is that of a format of the host which frames can have.
bool IsConcrete(RK_PixelFormat format);

/// Throws `std::invalid_argument` unless `IsConcrete(format)`.
void RequireConcrete(RK_PixelFormat format);

/// The name without `CvPixelFormat_`; it ends at a zero byte.
std::string_view ShortName(const PixelFormatRow& row);

/// For people: the name without `CvPixelFormat_` and the code's characters, "BGRA_4444_8u (bgra)"; the code
/// in hexadecimal if the host has no such format.
std::string PixelFormatWords(CvPixelFormat code);

/// For data: the name of the format, the code in hexadecimal if the host has no such format.
std::string PixelFormatNameOrHex(CvPixelFormat code);

/// The code in hexadecimal, "0x" and eight digits.
std::string PixelFormatHex(CvPixelFormat code);

/// The code's four characters, those that can't be printed as dots.
std::string PixelFormatCharacters(CvPixelFormat code);

/// Bytes of each of the four components of a concrete format: 4 (float) or 1.
constexpr std::uint32_t BytesPerComponent(RK_PixelFormat format) {
    return (format & kRK_Float) != 0 ? 4 : 1;
}

/// Bytes of a pixel of a concrete format: 16 or 4.
constexpr std::uint32_t BytesPerPixel(RK_PixelFormat format) {
    return 4 * BytesPerComponent(format);
}

/// How many components come before component `component` (0 R or Y', 1 G or Cb, 2 B or Cr, 3 A) in a pixel of
/// a concrete format.
constexpr std::uint32_t ComponentOffset(RK_PixelFormat format, std::uint32_t component) {
    constexpr std::uint8_t kLast[4] = {2, 1, 0, 3}, kFirst[4] = {1, 2, 3, 0}; // alpha
    return (format & kRK_AlphaFirst) != 0 ? kFirst[component] : kLast[component];
}

/// The letters of a concrete format's components in their order in memory: B, G, R and A, or V (Cr), U (Cb),
/// Y and A. An ignored alpha is X.
constexpr std::array<char, 4> ComponentLetters(RK_PixelFormat format) {
    std::string_view letters = (format & kRK_YCbCr) != 0 ? "YUVA" : "RGBA";
    std::array<char, 4> ordered{};
    for (std::uint32_t i = 0; i < 4; ++i) ordered[ComponentOffset(format, i)] = letters[i];
    if ((format & kRK_AlphaIgnored) != 0) ordered[ComponentOffset(format, 3)] = 'X';
    return ordered;
}

} // namespace corvane
