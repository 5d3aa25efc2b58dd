#include "Rasterkit.h"

#include <bit>
#include <limits>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

#include "ExpectedFormats.h"
#include "RasterOracle.h"
#include "Services/Raster/RasterkitRows.h"

namespace {

using namespace corvane::raster;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

void Fill(void* start, std::int32_t step, std::uint32_t width, std::uint32_t rows, RK_PixelFormat format,
          const std::array<float, 4>& bgra) {
    RK_FillWithColor(start, step, width, rows, format, bgra.data(), 260);
}

std::array<std::byte, 16> OnePixel(RK_PixelFormat format, const std::array<float, 4>& bgra) {
    std::array<std::byte, 16> pixel{};
    Fill(pixel.data(), 16, 1, 1, format, bgra);
    return pixel;
}

std::array<int, 4> Codes(RK_PixelFormat format, const std::array<float, 4>& bgra) {
    const auto pixel = OnePixel(format, bgra);
    std::array<int, 4> codes;
    for (std::size_t i = 0; i < 4; ++i) codes[i] = std::to_integer<int>(pixel[i]);
    return codes;
}

std::array<float, 4> Floats(RK_PixelFormat format, const std::array<float, 4>& bgra) {
    return std::bit_cast<std::array<float, 4>>(OnePixel(format, bgra));
}

// Catches a formula, a range, or an order of the components that is not the published one.
TEST(RasterFillTest, EveryFormatHoldsThePublishedComponents) {
    for (const ExpectedFormat& expected : kExpectedFormats)
        for (float part = 0.01f; part < 1.0f; part += 0.07f)
            EXPECT_TRUE(IsPixel(OnePixel(expected.delivered, {part, 0.62f, 1 - part, 0.9f}).data(),
                                {1 - part, 0.62f, part, 0.9f}, expected.delivered));
}

// Catches rounding to even, rounding of an inexact sum, and clamping before rounding.
TEST(RasterFillTest, CodesRoundHalfUpAndClamp) {
    EXPECT_EQ(Codes(8, {0.5f, 0.49999f, 1.5f / 255, -0.001f}), (std::array{128, 127, 2, 0}));
    EXPECT_EQ(Codes(8, {1.001f, 0.998f, -7, 300}), (std::array{255, 254, 0, 255}));
    EXPECT_EQ(Codes(12, {0.5f, 0.5f, 0.5f, 0.5f}), (std::array{128, 128, 126, 128})) << "Y' is exactly 125.5";
    EXPECT_EQ(Codes(2060, {0.5f, 0.5f, 0.5f, 0.5f}), (std::array{128, 128, 126, 128})) << "125.5, too";
    EXPECT_EQ(Codes(12, {1, 1, 1, 1}), (std::array{128, 128, 235, 255}));
    EXPECT_EQ(Codes(2060, {1, 0, 0, 1}), (std::array{118, 240, 32, 255})) << "pure blue, BT.709";
    EXPECT_EQ(Codes(12, {0, 0, 1, 1}), (std::array{240, 90, 81, 255})) << "pure red, BT.601";
    EXPECT_EQ(Codes(24, {0.5f, 1, 2, 0.5f}), (std::array{64, 128, 255, 128})) << "63.75, 127.5, 255";
    EXPECT_EQ(Codes(28, {1, 1, 1, 0}), (std::array{128, 128, 16, 0})) << "no light is black, not green";
}

// Catches a trap, undefined behavior, or a NaN that reaches an encoder.
TEST(RasterFillTest, NumbersOutsideTheRangeAreHarmless) {
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(Codes(8, {kNaN, -kInfinity, kInfinity, kNaN}), (std::array{0, 0, 255, 0}));
    EXPECT_EQ(Codes(10, {largest, -largest, 1e-40f, kInfinity}), (std::array{255, 0, 0, 255}));
    EXPECT_EQ(Codes(24, {kInfinity, 1, kNaN, 0}), (std::array{0, 0, 0, 0}));
    EXPECT_EQ(Codes(12, {0.2f, kNaN, 0.7f, kNaN}), Codes(12, {0.2f, 0, 0.7f, 0}));
    EXPECT_EQ(Codes(12, {0, kInfinity, 0, 1}), (std::array{0, 0, 255, 255}));
    EXPECT_EQ(Codes(2060, {kInfinity, kInfinity, kInfinity, 1}), (std::array{0, 0, 255, 255}));
    EXPECT_EQ(Floats(9, {kNaN, kInfinity, -largest, 1e-45f}),
              (std::array{0.0f, kInfinity, -largest, 1e-45f}));
    EXPECT_EQ(Floats(13, {kInfinity, 0, kInfinity, 1}), (std::array{0.0f, 0.0f, kInfinity, 1.0f}));
    EXPECT_EQ(Floats(73, {kNaN, kInfinity, -kInfinity, 2}), (std::array{0.0f, kInfinity, -kInfinity, 2.0f}));
    EXPECT_EQ(Floats(89, {1e30f, 0, largest, 0}), (std::array{0.0f, 0.0f, 0.0f, 0.0f}));
}

// Catches a transfer that differs from the exact one in any place of a float: its bytes would depend on the
// machine.
TEST(RasterFillTest, LinearLightIsExactInEveryPlace) {
    for (float value = 0.0811f; value < 40.0f; value *= 1.00137f) {
        const long double exact = std::pow((value + 0.099L) / 1.099L, 1 / 0.45L);
        EXPECT_EQ(Floats(73, {value, -value, 0.05f, 1}),
                  (std::array{float(exact), float(-double(value) / 4.5), float(double(0.05f) / 4.5), 1.0f}));
    }
}

// Catches a byte too many or too few: tails, wide rows, fields, upward steps, and starts that are not
// aligned; in each way of writing: as the service chooses for memory that was just filled, as machines
// without wide vectors do, which no other machine takes, and as for memory that no cache holds.
TEST(RasterFillTest, ExactlyTheRowsAreWritten) {
    const std::array<float, 4> color{0.1f, 0.4f, 0.6f, 0.9f};
    constexpr decltype(&FillRows) kWays[] = {FillRows, FillRowsBaseline, FillRowsStreamed};
    for (const RK_PixelFormat format : {RK_PixelFormat{8}, RK_PixelFormat{9}})
        for (const std::uint32_t width :
             {1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 16u, 31u, 33u, 47u, 800u, 3072u, 3073u, 3200u})
            for (const auto& [rows, step] : {std::pair{1u, 1}, {9u, 1}, {6u, 2}, {5u, -2}})
                for (const std::size_t padding : {0u, 16u, 23u})
                    for (const auto way : kWays) {
                        const std::size_t rowBytes = width * OraclePixelBytes(format);
                        if (way != FillRows && rowBytes < 16) continue;
                        const auto pixel = OnePixel(format, color);
                        GuardedFrame frame(format, width, 13, padding), expected(format, width, 13, padding);
                        const std::uint32_t first = step < 0 ? 11 : 1;
                        for (const auto& bgra : {std::array{0.9f, 0.6f, 0.4f, 0.1f}, color})
                            way(frame.At(0, first), step * frame.RowBytes(), rowBytes, rows,
                                ConvertColor(bgra.data(), format));
                        for (std::uint32_t row = 0; row < rows; ++row)
                            for (std::uint32_t x = 0; x < width; ++x)
                                std::memcpy(expected.At(x, first + row * static_cast<std::uint32_t>(step)),
                                            pixel.data(), OraclePixelBytes(format));
                        ASSERT_EQ(frame.Bytes() == expected.Bytes(), true)
                            << "format " << format << ", " << width << " pixels, " << rows << " rows, step "
                            << step << ", padding " << padding << ", way "
                            << std::ranges::find(kWays, way) - kWays;
                    }
}

// Catches a write in a format that the service does not know: the buffer may be smaller than it thinks.
TEST(RasterFillTest, OtherFormatsAndModesAreRefused) {
    GuardedFrame frame(9, 4, 4);
    const std::array<float, 4> color{};
    const std::vector<std::byte> before = frame.Bytes();
    std::set<RK_PixelFormat> formats{4104, 0x01000008, 0x09000031, 0x0D000001, 0x80000008};
    for (RK_PixelFormat format = 0; format < 4096; ++format) formats.insert(format);
    for (const ExpectedFormat& expected : kExpectedFormats) formats.erase(expected.delivered);
    for (const RK_PixelFormat format : formats)
        EXPECT_THROW(Fill(frame.At(0, 0), frame.RowBytes(), 4, 4, format, color), std::invalid_argument)
            << format;
    EXPECT_THROW(RK_FillWithColor(frame.At(0, 0), frame.RowBytes(), 4, 4, 9, color.data(), 261),
                 std::invalid_argument);
    Fill(frame.At(0, 0), frame.RowBytes(), 0, 4, 9, color);
    Fill(frame.At(0, 0), frame.RowBytes(), 4, 0, 9, color);
    EXPECT_EQ(frame.Bytes() == before, true);
}

} // namespace
