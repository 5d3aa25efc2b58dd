#include "Rasterkit.h"

#include <cmath>
#include <limits>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "RasterOracle.h"

namespace {

constexpr RK_PixelFormat kBGRA = 8;
constexpr RK_PixelFormat kBGRAFloat = 9;

// Prints at a place and height in pixels; the frame's sides are powers of two, so that shares are exact.
void PrintAt(GuardedFrame& frame, RK_PixelFormat format, std::int32_t number, std::uint32_t height, int x,
             int y) {
    const auto share = [](double part, std::uint32_t whole) { return static_cast<float>(part / whole); };
    RK_PrintNum(frame.At(0, 0), frame.RowBytes(), format, frame.Width(), frame.Height(), number,
                share(height, frame.Height()), {share(x, frame.Width()), share(y, frame.Height())}, 1);
}

int Luminance(GuardedFrame& frame, std::uint32_t x, std::uint32_t y) {
    return std::to_integer<int>(frame.At(x, y)[1]);
}

// How many shapes are printed, less the holes in them: Euler's number, from the pixels that are light alone,
// in pairs and in squares. Those of untouched rows and columns don't count.
int ShapesLessHoles(GuardedFrame& frame) {
    const auto isLight = [&](std::uint32_t x, std::uint32_t y) {
        return frame.IsTouched(x, y) && Luminance(frame, x, y) >= 128;
    };
    int number = 0;
    for (std::uint32_t y = 0; y + 1 < frame.Height(); ++y)
        for (std::uint32_t x = 0; x + 1 < frame.Width(); ++x) {
            if (!isLight(x, y)) continue;
            const bool right = isLight(x + 1, y), below = isLight(x, y + 1);
            number += 1 - right - below + (right && below && isLight(x + 1, y + 1));
        }
    return number;
}

// Catches a print at the wrong place or of the wrong size, and a box with holes or without margins.
TEST(RasterPrintTest, DigitsStandOnABoxAtTheirPlace) {
    GuardedFrame frame(kBGRA, 400, 300);
    // As the renderer does: digits 36 high from (20, 15), 27 apart and 22 wide; margins of 7.
    RK_PrintNum(frame.At(0, 0), frame.RowBytes(), kBGRA, 400, 300, 808, 0.12f, {0.05f, 0.05f}, 1);
    for (std::uint32_t y = 0; y < 300; ++y)
        for (std::uint32_t x = 0; x < 400; ++x) {
            ASSERT_EQ(frame.IsTouched(x, y), x >= 13 && x < 103 && y >= 8 && y < 58) << x << ", " << y;
            const bool isInDigits = x >= 20 && x < 96 && y >= 15 && y < 51;
            const bool isMargin = frame.IsTouched(x, y) && !isInDigits;
            ASSERT_TRUE(!isMargin || Luminance(frame, x, y) < 40) << x << ", " << y;
        }
    int lightInFirstRow = 0, lightInLastRow = 0;
    for (std::uint32_t x = 20; x < 96; ++x) {
        lightInFirstRow += Luminance(frame, x, 15) > 128;
        lightInLastRow += Luminance(frame, x, 50) > 128;
    }
    EXPECT_GT(lightInFirstRow, 9);
    EXPECT_GT(lightInLastRow, 9);
    EXPECT_TRUE(frame.IsPaddingUntouched());
}

// Catches shapes that can't be told apart or whose counters close: a 6 must have one hole, an 8 two.
TEST(RasterPrintTest, DigitsAreDifferentAndOpen) {
    const std::array<int, 10> holes{1, 0, 0, 0, 1, 0, 1, 0, 2, 1};
    for (const std::uint32_t height : {20u, 40u, 130u}) {
        std::set<std::vector<std::byte>> pictures;
        for (std::int32_t digit = 0; digit < 10; ++digit) {
            GuardedFrame frame(kBGRA, 256, 256);
            PrintAt(frame, kBGRA, digit, height, 30, 30);
            EXPECT_EQ(ShapesLessHoles(frame), 1 - holes[static_cast<std::size_t>(digit)])
                << digit << " at " << height;
            pictures.insert(frame.Bytes());
        }
        EXPECT_EQ(pictures.size(), 10u);
    }
    GuardedFrame minus(kBGRA, 256, 256);
    PrintAt(minus, kBGRA, -1, 100, 30, 30);
    EXPECT_TRUE(Luminance(minus, 85, 80) > 128 && Luminance(minus, 86, 74) < 128) << "strokes end round";
}

// Catches digits in the wrong order, a lost sign, and the one number that has no positive counterpart.
TEST(RasterPrintTest, NumbersAreTheirDigitsSideBySide) {
    constexpr std::uint32_t kHeight = 25, kAdvance = 19;
    for (const std::int32_t number : {0, 7, 1234567890, -45, std::numeric_limits<std::int32_t>::max(),
                                      std::numeric_limits<std::int32_t>::min()}) {
        GuardedFrame whole(kBGRA, 512, 64);
        PrintAt(whole, kBGRA, number, kHeight, 20, 20);
        const std::string text = std::to_string(number);
        for (std::size_t i = 0; i < text.size(); ++i) {
            // The sign is compared with that of another number.
            GuardedFrame single(kBGRA, 512, 64);
            PrintAt(single, kBGRA, text[i] == '-' ? -1 : text[i] - '0', kHeight, 20, 20);
            const auto offset = static_cast<std::uint32_t>(i) * kAdvance;
            for (std::uint32_t y = 20; y < 20 + kHeight; ++y)
                ASSERT_EQ(std::memcmp(whole.At(20 + offset, y), single.At(20, y), 15 * 4), 0)
                    << number << ", character " << i << ", row " << y;
        }
        const auto end = 20 + static_cast<std::uint32_t>(text.size() - 1) * kAdvance + 15 + 5;
        EXPECT_TRUE(whole.IsTouched(end - 1, 30) && !whole.IsTouched(end, 30)) << number;
    }
    GuardedFrame tiny(kBGRA, 64, 64);
    PrintAt(tiny, kBGRA, 1, 2, 20, 20);
    EXPECT_TRUE(tiny.IsTouched(20, 20) && !tiny.IsTouched(21, 20)) << "the digit's gap ends with the box";
}

// Catches a write outside the frame, and a clipped print that is shifted.
TEST(RasterPrintTest, PrintsAreClippedToTheFrame) {
    struct Row {
        std::uint32_t width, height, digits;
        int x, y;
    };
    for (const Row& row :
         {Row{1, 1, 1, 0, 0}, Row{1, 1, 30, 0, 0}, Row{4, 2, 3, 1, 1}, Row{32, 16, 20, -9, -7},
          Row{32, 16, 20, 25, 11}, Row{16, 64, 40, 4, 40}, Row{64, 8, 200, -70, -90}}) {
        GuardedFrame frame(kBGRA, row.width, row.height), large(kBGRA, 1024, 512);
        PrintAt(frame, kBGRA, -308, row.digits, row.x, row.y);
        PrintAt(large, kBGRA, -308, row.digits, row.x + 128, row.y + 128);
        for (std::uint32_t y = 0; y < row.height; ++y)
            ASSERT_EQ(std::memcmp(frame.At(0, y), large.At(128, y + 128), row.width * 4), 0)
                << row.width << " x " << row.height << ", row " << y;
        EXPECT_TRUE(frame.IsPaddingUntouched()) << row.width << " x " << row.height;
    }
}

// Catches an overflow in the layout: whatever the caller gives, nothing outside the frame is written.
TEST(RasterPrintTest, AbsurdSizesAndPlacesAreHarmless) {
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    for (const float size : {0.0f, -1.0f, nan, 1e-30f, 1e4f, 3e38f, inf})
        for (const float place : {0.05f, -1e30f, 1e30f, -inf, inf, nan}) {
            GuardedFrame frame(kBGRA, 3, 2);
            RK_PrintNum(frame.At(0, 0), frame.RowBytes(), kBGRA, 3, 2, -12, size, {place, place}, 1);
            ASSERT_TRUE(frame.IsPaddingUntouched()) << size << ", " << place;
        }
    EXPECT_THROW(RK_PrintNum(nullptr, 0, 14, 1, 1, 0, 0.1f, {0, 0}, 1), std::invalid_argument);
    EXPECT_THROW(RK_PrintNum(nullptr, 0, 8, 1, 1, 0, 0.1f, {0, 0}, 2), std::invalid_argument);
}

// Catches a box or blended edge pixels that are converted in another way than a fill. 640 is a height at
// which 8-bit digits are kept as pictures and float ones are drawn each time.
TEST(RasterPrintTest, FormatsShowTheSamePicture) {
    for (const auto& [height, place] : {std::pair{20u, std::pair{9, -5}}, {640u, {-260, -20}}}) {
        GuardedFrame reference(kBGRAFloat, 64, 64);
        PrintAt(reference, kBGRAFloat, 62, height, place.first, place.second);
        for (const RK_PixelFormat format : {8u, 12u, 26u, 91u, 2093u}) {
            GuardedFrame frame(format, 64, 64), expected(format, 64, 64);
            PrintAt(frame, format, 62, height, place.first, place.second);
            for (std::uint32_t y = 0; y < 64; ++y)
                for (std::uint32_t x = 0; x < 64; ++x)
                    if (reference.IsTouched(x, y))
                        RK_FillWithColor(expected.At(x, y), 0, 1, 1, format,
                                         reinterpret_cast<const float*>(reference.At(x, y)), 260);
            EXPECT_EQ(frame.Bytes() == expected.Bytes(), true) << format << " at " << height;
        }
    }
}

// Catches a picture that is dropped while it is used, or kept under the wrong key: more pictures than are
// kept.
TEST(RasterPrintTest, ManySizesPrintTheSameAgain) {
    const auto print = [](std::uint32_t height) {
        GuardedFrame frame(kBGRA, 64, 64);
        PrintAt(frame, kBGRA, 3, height, -300, -130); // across the upper arc
        return frame.Bytes();
    };
    const auto before = print(1100);
    for (const std::uint32_t height : {588u, 844u, 1036u})
        EXPECT_EQ(print(height) == before, false) << height;
    for (std::uint32_t height = 1101; height < 1125; ++height)
        EXPECT_EQ(print(height) == before, false) << height;
    EXPECT_EQ(print(1100) == before, true);
}

} // namespace
