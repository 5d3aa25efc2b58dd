#include "RasterkitPixel.h"

#include <array>
#include <bit>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

namespace corvane::raster {
namespace {

// Floats that are too large for a float on conversion become infinite.
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

// --- Which formats there are
// ------------------------------------------------------------------------------------

constexpr RK_PixelFormat kLowBits = 0x7F;
constexpr RK_PixelFormat kConcreteBits = kLowBits | kRK_709;

// The bits of a concrete format side by side: an index below 256.
constexpr std::size_t Index(RK_PixelFormat format) {
    return (format & kLowBits) | (format & kRK_709 ? kLowBits + 1 : 0);
}

constexpr bool IsMeant(RK_PixelFormat format) {
    const auto has = [format](RK_PixelFormat bit) { return (format & bit) != 0; };
    if (!has(kRK_4444)) return false;
    if (has(kRK_Premultiplied) && has(kRK_AlphaIgnored)) return false;
    if (has(kRK_YCbCr)) return !has(kRK_AlphaFirst) && !has(kRK_Linear);
    return !has(kRK_709) && (has(kRK_Float) || !has(kRK_Linear));
}

constexpr auto kIsMeant = [] {
    std::array<bool, 2 * (kLowBits + 1)> meant{};
    for (RK_PixelFormat low = 0; low <= kLowBits; ++low)
        for (const RK_PixelFormat matrix : {RK_PixelFormat{0}, kRK_709})
            meant[Index(low | matrix)] = IsMeant(low | matrix);
    return meant;
}();

// --- Components
// -------------------------------------------------------------------------------------------------

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

// --- Linear light
// -----------------------------------------------------------------------------------------------

// x to the power 1/0.45 = 20/9, for x from 0.1 to the largest float. Built from operations that IEEE 754
// rounds exactly, because the C library's pow may differ in the last place from machine to machine.
double PowerOfInverseTransfer(double x) {
    // The ninth root: a guess within 4 % by dividing the exponent, then Halley's steps, which cube the error.
    constexpr std::uint64_t kBias = std::uint64_t{0x3FF0000000000000} / 9 * 8 - 0x0000B00000000000;
    double root = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) / 9 + kBias);
    for (int step = 0; step < 3; ++step) {
        const double square = root * root;
        const double fourth = square * square;
        const double ninth = fourth * fourth * root;
        root *= (8.0 * ninth + 10.0 * x) / (10.0 * ninth + 8.0 * x);
    }
    const double square = root * root;
    const double fifth = square * square * root;
    const double tenth = fifth * fifth;
    return tenth * tenth;
}

// The inverse of the transfer characteristic of BT.709, item 1.2. Values below black go on along its linear
// part.
double LinearLight(double value) {
    if (value < 4.5 * 0.018) return value / 4.5;
    if (value > std::numeric_limits<float>::max()) return value;
    return PowerOfInverseTransfer((value + 0.099) / 1.099);
}

// --- One pixel
// --------------------------------------------------------------------------------------------------

// Components in memory order but for the place of alpha.
struct Ordered {
    double first, second, third, alpha;
};

Ordered Converted8Bit(const Color& c, RK_PixelFormat format) {
    if (!(format & kRK_YCbCr)) return {255.0 * c.b, 255.0 * c.g, 255.0 * c.r, 255.0 * c.a};
    const Matrix& m = format & kRK_709 ? k709 : k601;
    return {Limited(m.RedDifference(c), m.RedUnit()), Limited(m.BlueDifference(c), m.BlueUnit()),
            LimitedLuma(m, c), 255.0 * c.a};
}

Ordered ConvertedFloat(const Color& c, RK_PixelFormat format) {
    if (format & kRK_Linear) return {LinearLight(c.b), LinearLight(c.g), LinearLight(c.r), c.a};
    if (!(format & kRK_YCbCr)) return {c.b, c.g, c.r, c.a};
    const Matrix& m = format & kRK_709 ? k709 : k601;
    return {m.RedDifference(c) / m.RedUnit(), m.BlueDifference(c) / m.BlueUnit(), m.Luma(c) / m.unit, c.a};
}

std::uint32_t Pixel(std::uint32_t first, std::uint32_t second, std::uint32_t third, std::uint32_t fourth) {
    return first | second << 8 | third << 16 | fourth << 24;
}

Pattern Store8Bit(const Ordered& o, RK_PixelFormat format) {
    static_assert(std::endian::native == std::endian::little);
    const std::uint32_t first = ToByte(o.first), second = ToByte(o.second), third = ToByte(o.third);
    const std::uint32_t alpha = ToByte(o.alpha);
    const std::uint32_t pixel =
        format & kRK_AlphaFirst ? Pixel(alpha, third, second, first) : Pixel(first, second, third, alpha);
    return Pattern{pixel, pixel, pixel, pixel};
}

Pattern StoreFloat(const Ordered& o, RK_PixelFormat format) {
    const auto first = ToFloatBits(o.first), second = ToFloatBits(o.second), third = ToFloatBits(o.third);
    const auto alpha = ToFloatBits(o.alpha);
    return format & kRK_AlphaFirst ? Pattern{alpha, third, second, first}
                                   : Pattern{first, second, third, alpha};
}

} // namespace

void RequireConcrete(RK_PixelFormat format) {
    if ((format & ~kConcreteBits) == 0 && kIsMeant[Index(format)]) return;
    throw std::invalid_argument(fmt::format("Raster pixel format 0x{:08X} can't be written.", format));
}

Pattern ConvertColor(const float* bgra, RK_PixelFormat format) {
    Color color = ReadColor(bgra);
    if (format & kRK_AlphaIgnored) color.a = 1.0;
    // Y'CbCr has an offset in its 8-bit form, so its color is multiplied before the conversion; the linear
    // forms are multiplied after it.
    const bool premultiplied = (format & kRK_Premultiplied) != 0;
    if (premultiplied && !(format & kRK_Linear))
        color = {color.b * color.a, color.g * color.a, color.r * color.a, color.a};

    if (!(format & kRK_Float)) return Store8Bit(Converted8Bit(color, format), format);
    Ordered o = ConvertedFloat(color, format);
    if (premultiplied && (format & kRK_Linear))
        o = {o.first * o.alpha, o.second * o.alpha, o.third * o.alpha, o.alpha};
    return StoreFloat(o, format);
}

} // namespace corvane::raster
