#include "ColorSpace.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace corvane {
namespace {

// The shares of red and blue in Y'; green has the rest.
struct Weights {
    double red, blue;
};

Weights WeightsOf(int matrix) {
    switch (matrix) {
    case kMatrix601: return {0.299, 0.114};
    case kMatrix2020: return {0.2627, 0.0593};
    default: return {0.2126, 0.0722};
    }
}

int KnownMatrix(int matrix, std::uint32_t height) {
    switch (matrix) {
    case 1: // BT.709
    case 7: // SMPTE ST 240, which is close to it
        return kMatrix709;
    case 4: // FCC, close to BT.601
    case 5:
    case 6: return kMatrix601;
    case 9:
    case 10: return kMatrix2020;
    default: return height <= 576 ? kMatrix601 : kMatrix709;
    }
}

// What a difference of 1 is in codes, and where 0 is.
struct Scale {
    double unit, zero;
};

Scale ScaleOf(bool chroma, const SampleCoding& coding) {
    const double step = std::ldexp(1.0, coding.bits - 8);
    if (coding.fullRange) return {256.0 * step - 1.0, chroma ? 128.0 * step : 0.0};
    return chroma ? Scale{224.0 * step, 128.0 * step} : Scale{219.0 * step, 16.0 * step};
}

template <class Function>
Color EachPart(const Color& color, Function function) {
    const auto mirrored = [&function](double value) {
        return std::copysign(function(std::abs(value)), value);
    };
    return {mirrored(color[0]), mirrored(color[1]), mirrored(color[2]), color[3]};
}

double Degrees(double radians) {
    return radians * 180.0 / std::numbers::pi;
}

double Radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

double SeventhPower(double value) {
    return std::pow(value, 7.0);
}

double Hue(double a, double b) {
    if (a == 0.0 && b == 0.0) return 0.0;
    const double degrees = Degrees(std::atan2(b, a));
    return degrees < 0.0 ? degrees + 360.0 : degrees;
}

// The mean of two hues along the shorter way round.
double MeanHue(double h1, double h2, bool gray) {
    if (gray) return h1 + h2;
    if (std::abs(h1 - h2) <= 180.0) return (h1 + h2) / 2.0;
    return h1 + h2 < 360.0 ? (h1 + h2 + 360.0) / 2.0 : (h1 + h2 - 360.0) / 2.0;
}

double HueWeight(double hue) {
    return 1.0 - 0.17 * std::cos(Radians(hue - 30.0)) + 0.24 * std::cos(Radians(2.0 * hue)) +
           0.32 * std::cos(Radians(3.0 * hue + 6.0)) - 0.20 * std::cos(Radians(4.0 * hue - 63.0));
}

} // namespace

const char* MatrixName(int matrix) {
    return matrix == kMatrix601 ? "BT.601" : matrix == kMatrix2020 ? "BT.2020" : "BT.709";
}

SampleCoding CodingOf(const PlanarFormat& format, const VideoTags& tags, std::uint32_t height) {
    if (!format.yCbCr) return {false, kMatrix709, true, format.bits};
    return {true, KnownMatrix(tags.matrix, height), format.fullRange, format.bits};
}

Codes Encode(const Color& color, const SampleCoding& coding) {
    const Scale luma = ScaleOf(false, coding), chroma = ScaleOf(true, coding);
    const double alpha = color[3] * (std::ldexp(1.0, coding.bits) - 1.0);
    if (!coding.yCbCr)
        return {luma.zero + luma.unit * color[0], luma.zero + luma.unit * color[1],
                luma.zero + luma.unit * color[2], alpha};
    const Weights w = WeightsOf(coding.matrix);
    const double y = w.red * color[0] + (1.0 - w.red - w.blue) * color[1] + w.blue * color[2];
    const double blue = (color[2] - y) / (2.0 * (1.0 - w.blue)), red = (color[0] - y) / (2.0 * (1.0 - w.red));
    return {luma.zero + luma.unit * y, chroma.zero + chroma.unit * blue, chroma.zero + chroma.unit * red,
            alpha};
}

Color FromParts(const std::array<double, 4>& parts, const SampleCoding& coding) {
    if (!coding.yCbCr) return parts;
    const Weights w = WeightsOf(coding.matrix);
    const double blue = parts[0] + 2.0 * (1.0 - w.blue) * parts[1];
    const double red = parts[0] + 2.0 * (1.0 - w.red) * parts[2];
    return {red, (parts[0] - w.red * red - w.blue * blue) / (1.0 - w.red - w.blue), blue, parts[3]};
}

Color Decode(const Codes& codes, const SampleCoding& coding) {
    std::array<double, 4> parts{};
    for (std::size_t i = 0; i < 3; ++i) {
        const Scale scale = ScaleOf(coding.yCbCr && i != 0, coding);
        parts[i] = (codes[i] - scale.zero) / scale.unit;
    }
    parts[3] = codes[3] / (std::ldexp(1.0, coding.bits) - 1.0);
    return FromParts(parts, coding);
}

const char* TransferName(Transfer transfer) {
    switch (transfer) {
    case Transfer::kSrgb: return "sRGB";
    case Transfer::kGamma22: return "gamma 2.2";
    case Transfer::kGamma24: return "gamma 2.4";
    default: return "BT.709";
    }
}

Color ToLinear(const Color& color, Transfer transfer) {
    return EachPart(color, [transfer](double value) {
        switch (transfer) {
        case Transfer::kSrgb:
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        case Transfer::kGamma22: return std::pow(value, 2.2);
        case Transfer::kGamma24: return std::pow(value, 2.4);
        default: return value < 0.081 ? value / 4.5 : std::pow((value + 0.099) / 1.099, 1.0 / 0.45);
        }
    });
}

Color ToGammaCoded(const Color& linear, Transfer transfer) {
    return EachPart(linear, [transfer](double value) {
        switch (transfer) {
        case Transfer::kSrgb:
            return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1.0 / 2.4) - 0.055;
        case Transfer::kGamma22: return std::pow(value, 1.0 / 2.2);
        case Transfer::kGamma24: return std::pow(value, 1.0 / 2.4);
        default: return value < 0.018 ? 4.5 * value : 1.099 * std::pow(value, 0.45) - 0.099;
        }
    });
}

Lab ToLab(const Color& color) {
    const Color light = ToLinear(color, Transfer::kGamma24);
    const auto root = [](double value) {
        constexpr double kLimit = 216.0 / 24389.0;
        return value > kLimit ? std::cbrt(value) : (24389.0 / 27.0 * value + 16.0) / 116.0;
    };
    const auto sum = [&light](double r, double g, double b) {
        return (r * light[0] + g * light[1] + b * light[2]) / (r + g + b);
    };
    const double x = root(sum(0.4124564, 0.3575761, 0.1804375));
    const double y = root(sum(0.2126729, 0.7151522, 0.0721750));
    const double z = root(sum(0.0193339, 0.1191920, 0.9503041));
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

double DeltaE2000(const Lab& a, const Lab& b) {
    const double meanC = SeventhPower((std::hypot(a[1], a[2]) + std::hypot(b[1], b[2])) / 2.0);
    const double stretch = 1.5 - 0.5 * std::sqrt(meanC / (meanC + SeventhPower(25.0)));
    const double a1 = stretch * a[1], a2 = stretch * b[1];
    const double c1 = std::hypot(a1, a[2]), c2 = std::hypot(a2, b[2]);
    const double h1 = Hue(a1, a[2]), h2 = Hue(a2, b[2]);
    const bool gray = c1 * c2 == 0.0;
    double turn = gray ? 0.0 : h2 - h1;
    if (turn > 180.0) turn -= 360.0;
    if (turn < -180.0) turn += 360.0;

    const double l = (a[0] + b[0]) / 2.0 - 50.0, c = (c1 + c2) / 2.0, hue = MeanHue(h1, h2, gray);
    const double lightness = (b[0] - a[0]) / (1.0 + 0.015 * l * l / std::sqrt(20.0 + l * l));
    const double chroma = (c2 - c1) / (1.0 + 0.045 * c);
    const double hueDifference =
        2.0 * std::sqrt(c1 * c2) * std::sin(Radians(turn / 2.0)) / (1.0 + 0.015 * c * HueWeight(hue));
    const double blue = std::pow((hue - 275.0) / 25.0, 2.0);
    const double rotation = -std::sin(Radians(60.0 * std::exp(-blue))) * 2.0 *
                            std::sqrt(SeventhPower(c) / (SeventhPower(c) + SeventhPower(25.0)));
    return std::sqrt(lightness * lightness + chroma * chroma + hueDifference * hueDifference +
                     rotation * chroma * hueDifference);
}

} // namespace corvane
