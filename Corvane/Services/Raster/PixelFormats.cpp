#include "PixelFormats.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <fmt/format.h>

namespace {

using corvane::PixelFormatRow;

constexpr RK_PixelFormat k8u = kRK_4444;
constexpr RK_PixelFormat k32f = kRK_4444 | kRK_Float;
constexpr RK_PixelFormat kLinear = k32f | kRK_Linear;

constexpr RK_PixelFormat k601 = 0;
constexpr RK_PixelFormat k709 = kRK_709;

constexpr RK_PixelFormat kVideo8u = kRK_Extended_Video | kRK_Extended_8Bit;
constexpr RK_PixelFormat kPacked422 = 0x09000000 | kVideo8u;
constexpr RK_PixelFormat kPlanar420 = 0x0A000000 | kVideo8u;
constexpr RK_PixelFormat kSDDV = 0x0B000000 | kVideo8u | k601;
constexpr RK_PixelFormat kHDDV = 0x0C000000 | kVideo8u | k709;
constexpr RK_PixelFormat kPacked10Bit = 0x0D000000 | kRK_Extended_Video;

// What tells the members of an extended family apart.
constexpr RK_PixelFormat kChromaFirst = 1u << 1;    // packed 4:2:2
constexpr RK_PixelFormat kFieldPicture = 1u << 1;   // planar 4:2:0
constexpr RK_PixelFormat kPAL = 1u << 1;            // DV
constexpr RK_PixelFormat kDoubleRate = 1u << 2;     // DV SD: 50 megabits a second, else 25
constexpr RK_PixelFormat kInterlaced1080 = 1u << 2; // DV HD: 1080i, else 720p

#define ROW(name, raster)                                                                                    \
    PixelFormatRow {                                                                                         \
        name, #name, raster                                                                                  \
    }

constexpr std::array kFormats{
    ROW(CvPixelFormat_BGRA_4444_8u, k8u),
    ROW(CvPixelFormat_VUYA_4444_8u, k8u | kRK_YCbCr),
    ROW(CvPixelFormat_VUYA_4444_8u_709, k8u | kRK_YCbCr | k709),
    ROW(CvPixelFormat_ARGB_4444_8u, k8u | kRK_AlphaFirst),
    ROW(CvPixelFormat_BGRX_4444_8u, k8u | kRK_AlphaIgnored),
    ROW(CvPixelFormat_VUYX_4444_8u, k8u | kRK_YCbCr | kRK_AlphaIgnored),
    ROW(CvPixelFormat_VUYX_4444_8u_709, k8u | kRK_YCbCr | kRK_AlphaIgnored | k709),
    ROW(CvPixelFormat_XRGB_4444_8u, k8u | kRK_AlphaFirst | kRK_AlphaIgnored),
    ROW(CvPixelFormat_BGRP_4444_8u, k8u | kRK_Premultiplied),
    ROW(CvPixelFormat_VUYP_4444_8u, k8u | kRK_YCbCr | kRK_Premultiplied),
    ROW(CvPixelFormat_VUYP_4444_8u_709, k8u | kRK_YCbCr | kRK_Premultiplied | k709),
    ROW(CvPixelFormat_PRGB_4444_8u, k8u | kRK_AlphaFirst | kRK_Premultiplied),
    ROW(CvPixelFormat_BGRA_4444_32f, k32f),
    ROW(CvPixelFormat_VUYA_4444_32f, k32f | kRK_YCbCr),
    ROW(CvPixelFormat_VUYA_4444_32f_709, k32f | kRK_YCbCr | k709),
    ROW(CvPixelFormat_ARGB_4444_32f, k32f | kRK_AlphaFirst),
    ROW(CvPixelFormat_BGRX_4444_32f, k32f | kRK_AlphaIgnored),
    ROW(CvPixelFormat_VUYX_4444_32f, k32f | kRK_YCbCr | kRK_AlphaIgnored),
    ROW(CvPixelFormat_VUYX_4444_32f_709, k32f | kRK_YCbCr | kRK_AlphaIgnored | k709),
    ROW(CvPixelFormat_XRGB_4444_32f, k32f | kRK_AlphaFirst | kRK_AlphaIgnored),
    ROW(CvPixelFormat_BGRP_4444_32f, k32f | kRK_Premultiplied),
    ROW(CvPixelFormat_VUYP_4444_32f, k32f | kRK_YCbCr | kRK_Premultiplied),
    ROW(CvPixelFormat_VUYP_4444_32f_709, k32f | kRK_YCbCr | kRK_Premultiplied | k709),
    ROW(CvPixelFormat_PRGB_4444_32f, k32f | kRK_AlphaFirst | kRK_Premultiplied),
    ROW(CvPixelFormat_YUYV_422_8u_601, kPacked422 | k601),
    ROW(CvPixelFormat_YUYV_422_8u_709, kPacked422 | k709),
    ROW(CvPixelFormat_UYVY_422_8u_601, kPacked422 | kChromaFirst | k601),
    ROW(CvPixelFormat_UYVY_422_8u_709, kPacked422 | kChromaFirst | k709),
    ROW(CvPixelFormat_V210_422_10u_601, kPacked10Bit | k601),
    ROW(CvPixelFormat_V210_422_10u_709, kPacked10Bit | k709),
    ROW(CvPixelFormat_BGRA_4444_32f_Linear, kLinear),
    ROW(CvPixelFormat_BGRP_4444_32f_Linear, kLinear | kRK_Premultiplied),
    ROW(CvPixelFormat_BGRX_4444_32f_Linear, kLinear | kRK_AlphaIgnored),
    ROW(CvPixelFormat_ARGB_4444_32f_Linear, kLinear | kRK_AlphaFirst),
    ROW(CvPixelFormat_PRGB_4444_32f_Linear, kLinear | kRK_AlphaFirst | kRK_Premultiplied),
    ROW(CvPixelFormat_XRGB_4444_32f_Linear, kLinear | kRK_AlphaFirst | kRK_AlphaIgnored),
    ROW(CvPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601, kPlanar420 | k601),
    ROW(CvPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601, kPlanar420 | kFieldPicture | k601),
    ROW(CvPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709, kPlanar420 | k709),
    ROW(CvPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709, kPlanar420 | kFieldPicture | k709),
    ROW(CvPixelFormat_NTSCDV25, kSDDV),
    ROW(CvPixelFormat_PALDV25, kSDDV | kPAL),
    ROW(CvPixelFormat_NTSCDV50, kSDDV | kDoubleRate),
    ROW(CvPixelFormat_PALDV50, kSDDV | kDoubleRate | kPAL),
    ROW(CvPixelFormat_NTSCDV100_720p, kHDDV),
    ROW(CvPixelFormat_PALDV100_720p, kHDDV | kPAL),
    ROW(CvPixelFormat_NTSCDV100_1080i, kHDDV | kInterlaced1080),
    ROW(CvPixelFormat_PALDV100_1080i, kHDDV | kInterlaced1080 | kPAL),
};
static_assert(kFormats.size() == 48);

#undef ROW

constexpr bool IsUnique(std::uint32_t PixelFormatRow::*code) {
    std::array<std::uint32_t, kFormats.size()> codes{};
    std::ranges::transform(kFormats, codes.begin(), code);
    std::ranges::sort(codes);
    return std::ranges::adjacent_find(codes) == codes.end();
}
static_assert(IsUnique(&PixelFormatRow::code) && IsUnique(&PixelFormatRow::raster));

// The raster codes of formats that frames can have.
constexpr auto kConcrete = [] {
    std::array<bool, 2 * kRK_709> concrete{};
    for (const PixelFormatRow& row : kFormats)
        if (row.raster < kRK_FirstExtended) concrete.at(row.raster) = true;
    return concrete;
}();

// The engine's codes: the row plus this. Far from 0, so that a forgotten conversion is noticed.
constexpr BEPixelFormat kFirstBEPixelFormat = 0xBE000000;

[[noreturn]] void ThrowUnknown(const char* kind, std::uint32_t code) {
    throw std::invalid_argument(
        fmt::format("{} 0x{:08X} ('{}') is not known.", kind, code, corvane::PixelFormatCharacters(code)));
}

const PixelFormatRow& RowOfCode(CvPixelFormat code) {
    const PixelFormatRow* const row = corvane::FindPixelFormat(code);
    if (row == nullptr) ThrowUnknown("Pixel format", code);
    return *row;
}

const PixelFormatRow& RowOfEngineCode(BEPixelFormat format) {
    // Codes below the first wrap to numbers past the end.
    const std::uint32_t row = format - kFirstBEPixelFormat;
    if (row >= kFormats.size()) ThrowUnknown("Engine pixel format", format);
    return kFormats[row];
}

BEPixelFormat EngineCode(const PixelFormatRow& row) {
    return kFirstBEPixelFormat + static_cast<BEPixelFormat>(&row - kFormats.data());
}

} // namespace

BEPixelFormat SDKToBEPixelFormat(CvPixelFormat format) {
    return EngineCode(RowOfCode(format));
}

CvPixelFormat BEToSDKPixelFormat(BEPixelFormat format) {
    return RowOfEngineCode(format).code;
}

RK_PixelFormat BEPixelFormatToRKPixelFormat(BEPixelFormat format) {
    return RowOfEngineCode(format).raster;
}

BEPixelFormat RKPixelFormatToBEPixelFormat(RK_PixelFormat format) {
    const PixelFormatRow* const row = corvane::FindPixelFormatOf(format);
    if (row == nullptr) ThrowUnknown("Raster pixel format", format);
    return EngineCode(*row);
}

namespace corvane {

std::span<const PixelFormatRow> PixelFormatTable() {
    return kFormats;
}

const PixelFormatRow* FindPixelFormat(CvPixelFormat code) {
    const auto* row = std::ranges::find(kFormats, code, &PixelFormatRow::code);
    return row == kFormats.end() ? nullptr : row;
}

const PixelFormatRow* FindPixelFormatOf(RK_PixelFormat raster) {
    const auto* row = std::ranges::find(kFormats, raster, &PixelFormatRow::raster);
    return row == kFormats.end() ? nullptr : row;
}

RK_PixelFormat RasterFormatOf(CvPixelFormat code) {
    return RowOfCode(code).raster;
}

bool IsConcrete(RK_PixelFormat format) {
    return format < kConcrete.size() && kConcrete[format];
}

void RequireConcrete(RK_PixelFormat format) {
    if (IsConcrete(format)) return;
    throw std::invalid_argument(fmt::format("Raster pixel format 0x{:08X} can't be written.", format));
}

std::string_view ShortName(const PixelFormatRow& row) {
    constexpr std::string_view kPrefix = "CvPixelFormat_";
    return row.name.substr(kPrefix.size());
}

std::string PixelFormatWords(CvPixelFormat code) {
    const PixelFormatRow* const row = FindPixelFormat(code);
    if (row == nullptr) return PixelFormatHex(code);
    return fmt::format("{} ({})", ShortName(*row), PixelFormatCharacters(code));
}

std::string PixelFormatNameOrHex(CvPixelFormat code) {
    const PixelFormatRow* const row = FindPixelFormat(code);
    return row == nullptr ? PixelFormatHex(code) : std::string(row->name);
}

std::string PixelFormatHex(CvPixelFormat code) {
    return fmt::format("0x{:08x}", code);
}

std::string PixelFormatCharacters(CvPixelFormat code) {
    std::string characters;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto character = static_cast<unsigned char>(code >> shift);
        characters += character > 0x20 && character < 0x7F ? static_cast<char>(character) : '.';
    }
    return characters;
}

} // namespace corvane
