// Faults sought: rates and durations at their limits, and settings that a second file leaves as they were.
// The rest of what is said of a clip is what `synthex validate` checks, byte by byte.
#include "PluginFixture.h"

#include <array>

#include <fmt/format.h>

namespace {

class InfoTest : public PluginTest {};

// If the rate can't be told the outputs start at 0; the duration is the product all the same.
TEST_F(InfoTest, RatesAndDurationsAtTheirLimits) {
    const struct {
        std::int64_t ticks, ticksPerFrame;
        std::uint32_t scale, sampleSize, duration;
    } kRows[] = {
        {100, 0, 0, 0, 0},
        {100, -7, 0, 0, 0},
        {-1, 10160640000, 25, 1, 4294967295u},
        // 4,294,968 frames of 1001: the product leaves 32 bits
        {18201359701324800, 4237833600, 60000, 1001, 4294968u * 1001u},
    };
    for (const auto& row : kRows) {
        const std::string prefs = fmt::format(R"({{"mFieldType":258,"mVideoDuration":{{"ticks":{}}},)"
                                              R"("mVideoFrameRate":{{"ticksperframe":{}}}}})",
                                              row.ticks, row.ticksPerFrame);
        imFileInfoRec8 info;
        ASSERT_EQ(GetInfo(u"/none", prefs.c_str(), nullptr, info).result, 0);
        EXPECT_EQ((std::array<std::uint32_t, 3>{info.mScale, info.mSampleSize, info.mDuration}),
                  (std::array{row.scale, row.sampleSize, row.duration}))
            << prefs;
        EXPECT_EQ(std::uint8_t(info.mFieldType), 2) << "the low byte of the field type";
        Close(info.mPrivateData);
    }
}

TEST_F(InfoTest, AnotherFileReplacesTheSettingsOfAnInstance) {
    void* instance = nullptr;
    ASSERT_EQ(Open(Write("clip.synthex", kDistinctSettings), instance).result, 0);
    void* const opened = instance;
    EXPECT_EQ(Open(Write("bad.synthex", "{"), instance).result, 3);
    EXPECT_EQ(instance, opened);
    imFileInfoRec8 info;
    ASSERT_EQ(GetInfo(Path("clip.synthex"), nullptr, opened, info).result, 0);
    EXPECT_EQ(std::uint32_t(info.mWidth), 47u) << "a failed open must not change the settings";
    ASSERT_EQ(Open(Write("other.synthex", R"({"mFrameWidth": 16})"), instance).result, 0);
    EXPECT_EQ(instance, opened);
    ASSERT_EQ(GetInfo(Path("other.synthex"), nullptr, opened, info).result, 0);
    EXPECT_EQ(std::uint32_t(info.mWidth), 16u);
    Close(opened);
}

} // namespace
