// Faults sought: words that say something else than the clip is, or claim to be exact and are rounded.
#include "Engine/ClipText.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Engine/FramePlace.h"
#include "Engine/SettingsText.h"
#include "Tests/TestSettings.h"

namespace {

using namespace corvane;

TEST(ClipText, SaysExactlyWhatAClipIs) {
    EXPECT_EQ(RateText({60000, 1001}), "59.94 fps (60000/1001)");
    EXPECT_EQ(RateText({25, 2}), "12.5 fps");
    EXPECT_EQ(RateText({100, 1}), "100 fps");
    EXPECT_EQ(RateText({}), "none");
    EXPECT_EQ(TimeText(107892, 8475667200), "00:59:59.996"); // 59:59.9964 at 29.97 fps
    EXPECT_EQ(TimeText(INT64_MAX, 1).substr(0, 6), "10086:");
    EXPECT_EQ(AspectText({0, 1}), "0:1 (none)");
    EXPECT_EQ(FormatText({{1920, 1080}, {7, 7}, {24, 1}, FieldOrder::kProgressive, 0}),
              "1920 x 1080, 24 fps");
    // An order that the contract does not name. The terms of the aspect have a common factor.
    const auto bundle = std::make_shared<Bundle>(corvane::testing::BundlePath());
    const auto clip = Clip::OpenPrefs(
        bundle, "clip",
        corvane::testing::SettingsText(R"(,"mFieldType":3,"mFramePAR":{"numerator":24,"denominator":22})"
                                       R"(,"mVideoDuration":{"ticks":8467200001})"));
    EXPECT_EQ(FormatText(clip->Info().format), "64 x 48 (12:11), interlaced (order unknown), 30 fps");
    EXPECT_EQ(DurationText(clip->Info()), "00:00:00.033 (1 frame)");
}

TEST(FramePlace, TimecodesAreReadAsTheyAreWritten) {
    constexpr std::int64_t kNTSC = 8475667200, kDouble = 4237833600, kFilm = 10594584000, kPAL = 10160640000;
    for (const auto& [frame, ticks, text] : {std::tuple(1799, kNTSC, "00:00:59;29"),
                                             {1800, kNTSC, "00:01:00;02"},
                                             {17982, kNTSC, "00:10:00;00"},
                                             {107892, kNTSC, "01:00:00;00"},
                                             {3600, kDouble, "00:01:00;04"},
                                             {1440, kFilm, "00:01:00:00"},
                                             {90000, kPAL, "01:00:00:00"}})
        EXPECT_EQ(TimecodeText(frame, ticks), text);
    EXPECT_EQ(TimecodeText(5, 0), "");
    const auto bundle = std::make_shared<Bundle>(corvane::testing::BundlePath());
    for (const std::int64_t ticks : {kNTSC, kDouble, kFilm, kPAL}) {
        const auto clip = Clip::OpenPrefs(bundle, "clip",
                                          corvane::testing::SettingsText(fmt::format(
                                              R"(,"mVideoFrameRate":{{"ticksperframe":{}}})", ticks)));
        for (std::int64_t frame = 0; frame < 200000; frame += frame % 1800 < 5 ? 1 : 7) {
            const auto place = ReadFramePlace(TimecodeText(frame, ticks));
            ASSERT_TRUE(place) << frame;
            ASSERT_EQ(FrameOf(*place, *clip), frame);
        }
    }
}

TEST(SettingsText, IsReadAsItWasWritten) {
    ClipSettings settings{
        .pixelFormat = 1, .size = {2, 4294967295}, .aspect = {4, 5}, .fieldType = -6, .renderFormat = 7};
    settings.ticksPerFrame = INT64_MIN;
    settings.durationTicks = INT64_MAX;
    float value = 0.1f;
    for (SettingsColor ClipSettings::*color :
         {&ClipSettings::upper, &ClipSettings::lower, &ClipSettings::topStart, &ClipSettings::topEnd,
          &ClipSettings::bottomStart, &ClipSettings::bottomEnd})
        for (float& part : settings.*color) part = value += 1.1f;
    EXPECT_EQ(ReadSettings(WriteSettings(settings)), settings);
    EXPECT_EQ(ReadSettings(R"({"SerializerWrappedObject":)" + WriteSettings(settings) + '}'), settings);
    EXPECT_EQ(ReadSettings(R"({"mFrameWidth":"2","mFramePAR":1.5,"mUpperFieldColor":[]})").size, Size());
    EXPECT_EQ(ReadSettings("{"), ClipSettings());
}

} // namespace
