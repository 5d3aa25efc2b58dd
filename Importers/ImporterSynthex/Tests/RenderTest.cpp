// Faults sought: colors of the wrong field or end, a gradient whose arithmetic is in another order or
// precision, a format that collapses wrongly, a number where none belongs or the wrong one.
#include "PluginFixture.h"

#include <algorithm>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "Engine/Frame.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/TestHooks.h"
#include "Tests/Services/Raster/ExpectedFormats.h"

namespace {

constexpr std::int64_t kTicksPerFrame = 8475667200;
constexpr std::uint32_t kWidth = 47, kHeight = 33;
/// Rows from here on lie below the printed number.
constexpr std::uint32_t kBelowNumber = 10;

struct Color {
    float alpha, red, green, blue;
};

// All 24 channels differ, and none is a short binary fraction.
constexpr Color kUpper{0.9f, 0.11f, 0.62f, 0.33f}, kLower{0.8f, 0.71f, 0.22f, 0.43f};
constexpr Color kTopStart{0.7f, 0.31f, 0.92f, 0.53f}, kTopEnd{0.6f, 0.91f, 0.02f, 0.13f};
constexpr Color kBottomStart{0.5f, 0.51f, 0.42f, 0.93f}, kBottomEnd{0.4f, 0.21f, 0.72f, 0.03f};

std::string Member(const char* key, const Color& color) {
    return fmt::format(R"("{}":{{"mAlphaPart":{},"mRedPart":{},"mGreenPart":{},"mBluePart":{}}},)", key,
                       color.alpha, color.red, color.green, color.blue);
}

std::string Settings(CvPixelFormat format, int fieldType, int renderFormat, std::uint32_t height = kHeight,
                     std::int64_t frames = 7) {
    return "{" + Member("mUpperFieldColor", kUpper) + Member("mLowerFieldColor", kLower) +
           Member("mTopGradiantColorStart", kTopStart) + Member("mTopGradiantColorEnd", kTopEnd) +
           Member("mBottomGradiantColorStart", kBottomStart) + Member("mBottomGradiantColorEnd", kBottomEnd) +
           fmt::format(
               R"("mPixelFormat":{},"mFrameWidth":{},"mFrameHeight":{},"mFieldType":{},"mRenderFormat":{},)"
               R"("mFramePAR":{{"numerator":40,"denominator":33}},)"
               R"("mVideoDuration":{{"ticks":{}}},"mVideoFrameRate":{{"ticksperframe":{}}}}})",
               format, kWidth, height, fieldType, renderFormat, frames * kTicksPerFrame, kTicksPerFrame);
}

class RenderTest : public PluginTest {
  protected:
    /// The frame of such a clip at a time; empty if the answer is not 0, which `mResult` then holds. It is
    /// made twice, in the same memory, to see that nothing is written behind it.
    corvane::Frame Render(const std::string& settings, std::int64_t ticks) {
        for (bool again = false;; again = true) {
            CvVexelHandle handle = nullptr;
            mResult = AskForFrame(settings.c_str(), ticks, handle).result;
            if (mResult != 0) {
                if (handle != nullptr) corvane::VexelSuite()->Dispose(handle);
                return {};
            }
            corvane::Frame frame(handle);
            constexpr std::size_t kPage = 4096;
            const std::size_t size = frame.View().height * static_cast<std::size_t>(frame.View().rowBytes);
            const std::span behind(const_cast<std::byte*>(frame.View().pixels) + size,
                                   (kPage - size % kPage) % kPage);
            if (again) {
                EXPECT_EQ(std::ranges::count(behind, std::byte{0xCD}), std::ssize(behind)) << settings;
                return frame;
            }
            std::ranges::fill(behind, std::byte{0xCD});
        }
    }

    int mResult = 0;
};

/// The row is as the raster service fills it; its own tests say whether that is right.
void ExpectRow(const corvane::FrameView& view, std::uint32_t y, const Color& color) {
    const float bgra[] = {color.blue, color.green, color.red, color.alpha};
    std::vector<std::byte> row(view.width * corvane::BytesPerPixel(view.format));
    RK_FillWithColor(row.data(), 0, view.width, 1, view.format, bgra, 260);
    EXPECT_EQ(std::memcmp(view.At(0, y), row.data(), row.size()), 0) << "row " << y;
}

/// The gradient's color, in float and in the order that gives the published bytes.
Color Gradient(float t, std::uint32_t row, std::uint32_t height) {
    const auto channel = [&](float Color::*part) {
        const float top = kTopStart.*part + (kTopEnd.*part - kTopStart.*part) * t;
        const float bottom = kBottomStart.*part + (kBottomEnd.*part - kBottomStart.*part) * t;
        const float delta = bottom - top;
        return top + delta * (static_cast<float>(row) / static_cast<float>(height));
    };
    return {channel(&Color::alpha), channel(&Color::red), channel(&Color::green), channel(&Color::blue)};
}

// Float formats store what the plug-in computed: every bit of the arithmetic shows.
TEST_F(RenderTest, EveryFormatInEveryWayOfColoring) {
    for (const ExpectedFormat& format : kExpectedFormats)
        for (const int fieldType : {0, 1, 2}) {
            SCOPED_TRACE(format.name);
            const corvane::Frame solid = Render(Settings(format.code, fieldType, 0), 3 * kTicksPerFrame);
            const corvane::Frame bands = Render(Settings(format.code, fieldType, 7), -4 * kTicksPerFrame);
            ASSERT_TRUE(solid && bands);
            const corvane::FrameView& view = solid.View();
            EXPECT_EQ(std::tie(view.format, view.width, view.height),
                      std::tie(format.delivered, kWidth, kHeight));
            for (std::uint32_t y = fieldType == 0 ? 0 : kBelowNumber; y < kHeight; ++y) {
                if (y < kHeight - 1) ExpectRow(view, y, fieldType == 0 || y % 2 == 0 ? kUpper : kLower);
                ExpectRow(bands.View(), y, Gradient(static_cast<float>(-4.0 / 7.0), y, kHeight));
            }
        }
}

// More frames than single precision can count.
TEST_F(RenderTest, TheShareOfALongClipIsExact) {
    constexpr std::int64_t kFrame = 16777217, kFrames = 33554435;
    const corvane::Frame bands =
        Render(Settings(CvPixelFormat_BGRA_4444_32f, 0, 1, kHeight, kFrames), kFrame * kTicksPerFrame);
    ASSERT_TRUE(bands);
    for (std::uint32_t y = 0; y < kHeight; ++y)
        ExpectRow(bands.View(), y,
                  Gradient(static_cast<float>(double{kFrame} / double{kFrames}), y, kHeight));
}

// Of an odd number of rows each field has half, and the last row is as the buffer was.
TEST_F(RenderTest, TheLastOfAnOddNumberOfRowsIsLeft) {
    (void)Render(Settings(CvPixelFormat_BGRA_4444_8u, 0, 1), 0);
    const corvane::Frame fields = Render(Settings(CvPixelFormat_BGRA_4444_8u, 2, 0), 0);
    ASSERT_TRUE(fields);
    ExpectRow(fields.View(), kHeight - 2, kLower);
    ExpectRow(fields.View(), kHeight - 1, Gradient(0.0f, kHeight - 1, kHeight));
}

TEST_F(RenderTest, TheNumberIsTheFramesOwnAndOfInterlacedClipsOnly) {
    const auto pixels = [&](int fieldType, std::int64_t ticks) {
        const corvane::Frame frame =
            Render(Settings(CvPixelFormat_BGRA_4444_8u, fieldType, 0, 120, 500), ticks);
        return std::vector<std::byte>(frame.View().pixels, frame.View().At(0, frame.View().height));
    };
    EXPECT_EQ(pixels(0, 0), pixels(0, 12 * kTicksPerFrame));
    EXPECT_EQ(pixels(2, 12 * kTicksPerFrame), pixels(2, 13 * kTicksPerFrame - 1));
    EXPECT_NE(pixels(2, 12 * kTicksPerFrame), pixels(2, 12 * kTicksPerFrame - 1));

    // The same print through the service itself, over the same fields.
    std::vector<std::byte> expected = pixels(1, -1), printed = expected;
    const auto rowBytes = static_cast<std::int32_t>(expected.size() / 120);
    for (int y = 0; y < 120; ++y) {
        const Color& color = y % 2 == 0 ? kUpper : kLower;
        const float bgra[] = {color.blue, color.green, color.red, color.alpha};
        RK_FillWithColor(expected.data() + y * rowBytes, rowBytes, kWidth, 1, 8, bgra, 260);
    }
    RK_PrintNum(expected.data(), rowBytes, 8, kWidth, 120, -1, 0.12f, {0.05f, 0.05f}, 1);
    EXPECT_EQ(printed, expected);
}

// Row 0 lies last in memory then, and the second field begins before the first.
TEST_F(RenderTest, FieldsOfAFrameThatIsStoredBottomUp) {
    corvane::StoreFramesBottomUp(true);
    CvVexelHandle handle = nullptr;
    ASSERT_EQ(AskForFrame(Settings(CvPixelFormat_BGRA_4444_8u, 1, 0).c_str(), 0, handle).result, 0);
    const corvane::Frame frame(handle);
    corvane::StoreFramesBottomUp(false);
    for (std::uint32_t y = kBelowNumber; y < kHeight - 1; ++y)
        ExpectRow(frame.View(), y, y % 2 == 0 ? kUpper : kLower);
}

TEST_F(RenderTest, FramesThatCanNotBeMade) {
    const auto live = corvane::GetFrameStatistics().liveFrames;
    const struct {
        CvPixelFormat format;
        std::uint32_t height;
        int result;
        bool noMemory = false;
    } kRows[] = {{CvPixelFormat_BGRA_4444_8u, 0, 0},           // no rows
                 {CvPixelFormat_BGRA_4444_8u, 4294967295u, 5}, // too many
                 {CvPixelFormat_BGRA_4444_8u, kHeight, 5, true},
                 {0x12345678, kHeight, 3},
                 {CvPixelFormat_BGRA_4444_8u, kHeight, 0}};
    for (const auto& row : kRows) {
        if (row.noMemory) corvane::FailFrameCreation(1);
        const corvane::Frame frame = Render(Settings(row.format, 1, 1, row.height), 0);
        EXPECT_EQ(mResult, row.result) << row.format << ", " << row.height;
        EXPECT_EQ(static_cast<bool>(frame), row.result == 0);
    }
    EXPECT_EQ(corvane::GetFrameStatistics().liveFrames, live);
}

TEST_F(RenderTest, AClipOfNoFramesRendersWhateverTheArithmeticGives) {
    for (const std::int64_t frame : {0, 3})
        EXPECT_TRUE(Render(Settings(CvPixelFormat_VUYA_4444_8u, 1, 1, kHeight, 0), frame * kTicksPerFrame));
}

} // namespace
