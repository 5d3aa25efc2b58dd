// A second, slow conversion of colors to pixels, straight from the published formulas, and frames that show
// every byte which was written by mistake.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Rasterkit.h"

struct OracleColor {
    double r, g, b, a;
};

// The four components of a pixel in memory order, as they are before rounding; 8-bit ones in units of codes.
inline std::array<double, 4> OraclePixel(OracleColor c, RK_PixelFormat format) {
    const bool isFloat = format & 1, isPremultiplied = format & 16;
    if (format & 32) c.a = 1;
    const auto linear = [](double v) {
        return v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1 / 0.45);
    };
    if (format & 64) c = {linear(c.r), linear(c.g), linear(c.b), c.a};
    if (isPremultiplied) c = {c.r * c.a, c.g * c.a, c.b * c.a, c.a};
    if (format & 4) {
        const bool is709 = format & 2048;
        const double y =
            is709 ? 0.2126 * c.r + 0.7152 * c.g + 0.0722 * c.b : 0.299 * c.r + 0.587 * c.g + 0.114 * c.b;
        const double cb = (c.b - y) / (is709 ? 1.8556 : 1.772);
        const double cr = (c.r - y) / (is709 ? 1.5748 : 1.402);
        if (isFloat) return {cr, cb, y, c.a};
        return {128 + 224 * cr, 128 + 224 * cb, 16 + 219 * y, 255 * c.a};
    }
    const double scale = isFloat ? 1 : 255;
    if (format & 2) return {scale * c.a, scale * c.r, scale * c.g, scale * c.b};
    return {scale * c.b, scale * c.g, scale * c.r, scale * c.a};
}

inline std::size_t OraclePixelBytes(RK_PixelFormat format) {
    return format & 1 ? 16 : 4;
}

// Compares a stored pixel with the oracle's: 8-bit exactly, float to the last places of a float.
inline testing::AssertionResult IsPixel(const std::byte* stored, const OracleColor& color,
                                        RK_PixelFormat format) {
    const auto expected = OraclePixel(color, format);
    for (std::size_t i = 0; i < 4; ++i) {
        double got = 0, want = expected[i], tolerance = 0;
        if (format & 1) {
            float value;
            std::memcpy(&value, stored + 4 * i, 4);
            got = value;
            tolerance = 3e-7 * std::max(1.0, std::abs(want));
        } else {
            got = std::to_integer<int>(stored[i]);
            want = std::floor(std::min(255.0, std::max(0.0, want)) + 0.5);
        }
        if (!(std::abs(got - want) <= tolerance))
            return testing::AssertionFailure()
                   << "format " << format << ", component " << i << ": " << got << " instead of " << want;
    }
    return testing::AssertionSuccess();
}

// A frame with padded rows in the middle of other memory, everything filled with 0xCD.
class GuardedFrame {
  public:
    static constexpr std::size_t kGuard = 256;

    GuardedFrame(RK_PixelFormat format, std::uint32_t width, std::uint32_t height, std::size_t padding = 20)
        : mFormat(format), mWidth(width), mHeight(height),
          mRowBytes(width * OraclePixelBytes(format) + padding),
          mBytes(2 * kGuard + mRowBytes * height, std::byte{0xCD}) {}

    std::byte* At(std::uint32_t x, std::uint32_t y) {
        return mBytes.data() + kGuard + y * mRowBytes + x * OraclePixelBytes(mFormat);
    }
    bool IsTouched(std::uint32_t x, std::uint32_t y) {
        const std::span pixel(At(x, y), OraclePixelBytes(mFormat));
        return std::ranges::any_of(pixel, [](std::byte byte) { return byte != std::byte{0xCD}; });
    }
    std::int32_t RowBytes() const { return static_cast<std::int32_t>(mRowBytes); }
    std::uint32_t Width() const { return mWidth; }
    std::uint32_t Height() const { return mHeight; }
    const std::vector<std::byte>& Bytes() const { return mBytes; }

    // Everything that is not a pixel is as it was.
    bool IsPaddingUntouched() {
        std::vector<std::byte> rest = mBytes;
        for (std::uint32_t y = 0; y < mHeight; ++y)
            std::memset(rest.data() + kGuard + y * mRowBytes, 0xCD, mWidth * OraclePixelBytes(mFormat));
        return rest == std::vector<std::byte>(rest.size(), std::byte{0xCD});
    }

  private:
    RK_PixelFormat mFormat;
    std::uint32_t mWidth, mHeight;
    std::size_t mRowBytes;
    std::vector<std::byte> mBytes;
};
