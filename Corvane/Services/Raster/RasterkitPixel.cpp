#include "RasterkitPixel.h"

#include <array>
#include <bit>
#include <limits>

#include "PixelFormats.h"
#include "RasterkitTransfer.h"

namespace corvane::raster {
namespace {

// Floats that are too large for a float on conversion become infinite.
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

struct Color {
    double b, g, r, a;
};

double Number(double value) {
    return value == value ? value : 0.0;
}

Color ReadColor(const float* bgra) {
    return {Number(bgra[0]), Number(bgra[1]), Number(bgra[2]), Number(bgra[3])};
}

// Rounds half up and clamps; what is not a number is 0. `value` is the component in units of 8-bit codes.
std::uint32_t ToByte(double value) {
    const double raised = value + 0.5;
    const double positive = raised > 0.0 ? raised : 0.0;
    return static_cast<std::uint32_t>(static_cast<int>(positive < 255.0 ? positive : 255.0));
}

std::uint32_t ToFloatBits(double value) {
    return std::bit_cast<std::uint32_t>(static_cast<float>(Number(value)));
}

// A matrix of the published constants times a whole number, so that sums of components with few binary digits
// are exact and a value that lies half-way between two codes is seen to be there: (0.5, 0.5, 0.5) is Y'
// 125.5. Y' = (r R + g G + b B) / unit; Cb = (B - Y') / (2 (1 - Kb)) and Cr = (R - Y') / (2 (1 - Kr)) with
// all terms in the same unit.
struct Matrix {
    double unit, r, g, b;

    constexpr double Luma(const Color& c) const { return r * c.r + g * c.g + b * c.b; }
    constexpr double BlueDifference(const Color& c) const { return (unit - b) * c.b - r * c.r - g * c.g; }
    constexpr double RedDifference(const Color& c) const { return (unit - r) * c.r - g * c.g - b * c.b; }
    constexpr double BlueUnit() const { return 2.0 * (unit - b); }
    constexpr double RedUnit() const { return 2.0 * (unit - r); }
};

constexpr Matrix k601{1000.0, 299.0, 587.0, 114.0};
constexpr Matrix k709{10000.0, 2126.0, 7152.0, 722.0};

// Limited range: Y' spans 219 codes from 16, Cb and Cr 224 codes about 128.
double LimitedLuma(const Matrix& m, const Color& c) {
    return (219.0 * m.Luma(c) + 16.0 * m.unit) / m.unit;
}
double Limited(double difference, double unit) {
    return (224.0 * difference + 128.0 * unit) / unit;
}

// R or Y', G or Cb, B or Cr, and alpha.
using Components = std::array<double, 4>;

Components Converted8Bit(const Color& c, RK_PixelFormat format) {
    if (!(format & kRK_YCbCr)) return {255.0 * c.r, 255.0 * c.g, 255.0 * c.b, 255.0 * c.a};
    const Matrix& m = format & kRK_709 ? k709 : k601;
    return {LimitedLuma(m, c), Limited(m.BlueDifference(c), m.BlueUnit()),
            Limited(m.RedDifference(c), m.RedUnit()), 255.0 * c.a};
}

Components ConvertedFloat(const Color& c, RK_PixelFormat format) {
    if (format & kRK_Linear) return {LinearLight(c.r), LinearLight(c.g), LinearLight(c.b), c.a};
    if (!(format & kRK_YCbCr)) return {c.r, c.g, c.b, c.a};
    const Matrix& m = format & kRK_709 ? k709 : k601;
    return {m.Luma(c) / m.unit, m.BlueDifference(c) / m.BlueUnit(), m.RedDifference(c) / m.RedUnit(), c.a};
}

// The places of the components are constants here: a gradient stores a color for each row.
template <RK_PixelFormat kOrder>
Pattern Stored8Bit(const Components& components) {
    static_assert(std::endian::native == std::endian::little);
    std::uint32_t pixel = 0;
#pragma GCC unroll 4
    for (std::uint32_t i = 0; i < 4; ++i) pixel |= ToByte(components[i]) << (8 * ComponentOffset(kOrder, i));
    return Pattern{pixel, pixel, pixel, pixel};
}

template <RK_PixelFormat kOrder>
Pattern StoredFloat(const Components& components) {
    Pattern pixel{};
#pragma GCC unroll 4
    for (std::uint32_t i = 0; i < 4; ++i) pixel[ComponentOffset(kOrder, i)] = ToFloatBits(components[i]);
    return pixel;
}

template <RK_PixelFormat kOrder>
Pattern Stored(const Components& components, bool isFloat) {
    return isFloat ? StoredFloat<kOrder>(components) : Stored8Bit<kOrder>(components);
}

} // namespace

Pattern ConvertColor(const float* bgra, RK_PixelFormat format) {
    Color color = ReadColor(bgra);
    if (format & kRK_AlphaIgnored) color.a = 1.0;
    // Y'CbCr has an offset in its 8-bit form, so its color is multiplied before the conversion; the linear
    // forms are multiplied after it.
    const bool premultiplied = (format & kRK_Premultiplied) != 0;
    if (premultiplied && !(format & kRK_Linear))
        color = {color.b * color.a, color.g * color.a, color.r * color.a, color.a};

    const bool isFloat = (format & kRK_Float) != 0;
    Components c = isFloat ? ConvertedFloat(color, format) : Converted8Bit(color, format);
    if (premultiplied && (format & kRK_Linear)) c = {c[0] * c[3], c[1] * c[3], c[2] * c[3], c[3]};
    return (format & kRK_AlphaFirst) != 0 ? Stored<kRK_AlphaFirst>(c, isFloat) : Stored<0>(c, isFloat);
}

} // namespace corvane::raster
