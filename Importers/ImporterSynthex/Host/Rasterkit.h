/// The host's raster service: fills rows with a color and prints numbers, in any concrete pixel format.
#pragma once

#include <cstdint>

/// A pixel format as the raster service describes it: a set of bits.
///
/// *Concrete* formats (top byte 0) describe pixels of four components that the service can write:
///
/// | bit | set | clear |
/// |---|---|---|
/// | 0 | components are 32-bit floats | components are 8-bit unsigned |
/// | 1 | memory order A, R, G, B | memory order B, G, R, A |
/// | 2 | Y'CbCr, memory order V (Cr), U (Cb), Y, A | R'G'B' |
/// | 3 | four components a pixel, 4:4:4:4 (always set) | |
/// | 4 | color is premultiplied by alpha | straight |
/// | 5 | alpha is ignored; stored opaque | alpha is meant |
/// | 6 | linear light | gamma-coded |
/// | 11 | BT.709 matrix | BT.601 matrix |
///
/// *Extended* formats (top byte not 0) describe buffers that the service can't write: the top byte is the
/// family (0x09 packed 4:2:2, 0x0A planar 4:2:0, 0x0B DV SD, 0x0C DV HD, 0x0D packed 10-bit), bit 0 says
/// video samples, bits 4 and 5 are both set for 8-bit samples, bit 11 is the matrix as above, and the low
/// bits that remain tell the members of a family apart.
using RK_PixelFormat = std::uint32_t;

inline constexpr RK_PixelFormat kRK_Float = 1u << 0;
inline constexpr RK_PixelFormat kRK_AlphaFirst = 1u << 1;
inline constexpr RK_PixelFormat kRK_YCbCr = 1u << 2;
inline constexpr RK_PixelFormat kRK_4444 = 1u << 3;
inline constexpr RK_PixelFormat kRK_Premultiplied = 1u << 4;
inline constexpr RK_PixelFormat kRK_AlphaIgnored = 1u << 5;
inline constexpr RK_PixelFormat kRK_Linear = 1u << 6;
inline constexpr RK_PixelFormat kRK_709 = 1u << 11;

/// Formats at or above this one are extended.
inline constexpr RK_PixelFormat kRK_FirstExtended = 0x01000000;

/// Bits of an extended format.
inline constexpr RK_PixelFormat kRK_Extended_Video = 1u << 0;
inline constexpr RK_PixelFormat kRK_Extended_8Bit = (1u << 4) | (1u << 5);

/// The two formats in which extended ones are delivered: VUYA 8-bit BT.601 and VUYA float BT.709.
inline constexpr RK_PixelFormat kRK_VUYA_8u_601 = kRK_4444 | kRK_YCbCr;
inline constexpr RK_PixelFormat kRK_VUYA_32f_709 = kRK_4444 | kRK_YCbCr | kRK_Float | kRK_709;
static_assert(kRK_VUYA_8u_601 == 12 && kRK_VUYA_32f_709 == 2061);

/// Two floats handed over as one 8-byte value.
struct RK_Point {
    float x;
    float y;
};
static_assert(sizeof(RK_Point) == 8);

/// The fill mode for opaque replacement, and the only print style: light digits on a dark box.
inline constexpr std::int32_t kRK_FillReplace = 260;
inline constexpr std::int32_t kRK_PrintBoxed = 1;

/// Fills `rows` rows of `width` pixels with one color, beginning at `start` and going on `rowStep` bytes
/// from row to row. Bytes between the rows are not touched.
///
/// `color` is four floats B, G, R, A: gamma-coded R'G'B' and straight alpha, nominally 0..1; any value is
/// taken. A NaN counts as 0, and a result that is not a number (infinity minus infinity) is stored as 0. What
/// is stored:
/// - 8-bit: the exact value rounded half up and clamped to 0..255.
/// - float: neither rounded nor clamped.
/// - Y'CbCr: ITU-R BT.601-7, 2.5.1 to 2.5.3, or BT.709-6, items 3.2 to 3.5. 8-bit is limited range (Y'
///   16..235, Cb and Cr 16..240 about 128), float is Y' 0..1 and Cb, Cr -0.5..0.5.
/// - premultiplied: the converted components times alpha (for Y'CbCr, the conversion of R'G'B' times alpha).
/// - linear: the inverse of the transfer of BT.709-6, item 1.2.
///
/// `format` must be concrete and `mode` `kRK_FillReplace`, otherwise `std::invalid_argument` is thrown. Any
/// thread.
void RK_FillWithColor(void* start, std::int32_t rowStep, std::uint32_t width, std::uint32_t rows,
                      RK_PixelFormat format, const float* color, std::int32_t mode);

/// Prints `number` in decimal into a frame of `width` x `height` pixels.
///
/// `size` is the height of a digit as a share of the frame's height, `position` the top-left corner of the
/// first digit as shares of the frame's width and height. The print is clipped to the frame. The digits are
/// strokes of the service's own, so the bytes do not depend on fonts. Style 1 is light digits on a dark box.
///
/// `format` must be concrete and `style` `kRK_PrintBoxed`, otherwise `std::invalid_argument` is thrown. Any
/// thread.
void RK_PrintNum(void* base, std::int32_t rowBytes, RK_PixelFormat format, std::uint32_t width,
                 std::uint32_t height, std::int32_t number, float size, RK_Point position,
                 std::int32_t style);
