// Faults sought: fields that are swapped, written at the wrong byte or read from the wrong store; instances
// that leak or are lost.
#include "PluginFixture.h"

#include <array>

#include <fmt/format.h>

#include "lummediatypes.h"

namespace {

using corvane::HostRecord;

class InfoTest : public PluginTest {};

constexpr char kFieldsOnly[] = R"({"mFrameWidth": 16, "mFrameHeight": 9, "mFieldType": 258,
    "mVideoDuration": {"ticks": 2540160000000}, "mVideoFrameRate": {"ticksperframe": 10160640000}})";

TEST_F(InfoTest, EveryByteOfTheInfoRecord) {
    const std::u16string path = Write("clip.synthex", kDistinctSettings);
    void* instance = nullptr;
    ASSERT_EQ(Open(path, instance).result, 0);
    imFileInfoRec8 info;
    ASSERT_EQ(GetInfo(path, "not JSON, and not looked at", instance, info).result, 0);
    ExpectedBytes expected(214);
    expected.Put<std::uint16_t>(0, 1).Put<std::uint32_t>(2, 47).Put<std::uint32_t>(6, 33).Put<std::uint16_t>(
        12, 32);
    expected.Put<std::uint8_t>(18, 1).Put<std::uint8_t>(22, 1).Put<std::uint32_t>(34, 128).Put<std::uint32_t>(
        38, 117);
    expected.Put<std::uint32_t>(54, 1).Put<std::uint32_t>(162, 30000).Put<std::uint32_t>(166, 1001);
    expected.Put<std::uint32_t>(170, 100 * 1001).Put(198, instance).Put<const char*>(206, info.mPrefs);
    EXPECT_EQ(Bytes(info), expected);

    auto size = HostRecord<imPreferredFrameSizeRec>();
    size.mPrivateData = instance;
    size.mIndex = 1;
    EXPECT_EQ(mBundle.Call(kSelector_PreferredFrameSize, &size, nullptr).result, 3);
    size.mIndex = 0;
    EXPECT_EQ(mBundle.Call(kSelector_PreferredFrameSize, &size, nullptr).result, 0);
    EXPECT_EQ(Bytes(size), ExpectedBytes(32)
                               .Put(0, instance)
                               .Put<std::uint32_t>(20, 0)
                               .Put<std::uint32_t>(24, 47)
                               .Put<std::uint32_t>(28, 33));
    EXPECT_EQ(Close(instance), 0);
}

TEST_F(InfoTest, WithoutAFileTheSettingsComeFromThePreferences) {
    imFileInfoRec8 info;
    EXPECT_EQ(GetInfo(u"/none", nullptr, nullptr, info).result, 2);
    void* const instance = info.mPrivateData;
    ASSERT_NE(instance, nullptr) << "a new instance is stored even where the call on it fails";
    ExpectedBytes expected(214);
    expected.Put<std::uint16_t>(0, 1).Put(198, instance).Put<const char*>(206, nullptr);
    EXPECT_EQ(Bytes(info), expected);

    ASSERT_EQ(GetInfo(u"/none", kFieldsOnly, instance, info).result, 0);
    EXPECT_EQ(std::uint32_t(info.mWidth), 16u);
    EXPECT_EQ(std::uint32_t(info.mDuration), 250u);
    EXPECT_EQ(std::uint8_t(info.mFieldType), 2) << "the low byte of the field type";
    EXPECT_EQ(static_cast<void*>(info.mPrivateData), instance);
    EXPECT_EQ(Close(instance), 0);
}

// Where the rate can't be told the outputs start at 0; the duration is the product all the same.
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
        const std::string prefs =
            fmt::format(R"({{"mVideoDuration":{{"ticks":{}}},"mVideoFrameRate":{{"ticksperframe":{}}}}})",
                        row.ticks, row.ticksPerFrame);
        imFileInfoRec8 info;
        ASSERT_EQ(GetInfo(u"/none", prefs.c_str(), nullptr, info).result, 0);
        EXPECT_EQ((std::array<std::uint32_t, 3>{info.mScale, info.mSampleSize, info.mDuration}),
                  (std::array{row.scale, row.sampleSize, row.duration}))
            << prefs;
        Close(info.mPrivateData);
    }
}

TEST_F(InfoTest, OpeningKeepsAnInstanceAndDiscardsANewOneThatFailed) {
    void* instance = nullptr;
    EXPECT_EQ(Open(u"/none", instance).result, 2);
    EXPECT_EQ(instance, nullptr);

    const std::u16string path = Write("clip.synthex", kDistinctSettings);
    ASSERT_EQ(Open(path, instance).result, 0);
    void* const opened = instance;
    EXPECT_EQ(Open(u"/none", instance).result, 2);
    EXPECT_EQ(instance, opened);
    EXPECT_EQ(Open(Write("bad.synthex", "{"), instance).result, 3);
    EXPECT_EQ(instance, opened);
    imFileInfoRec8 info;
    ASSERT_EQ(GetInfo(path, nullptr, opened, info).result, 0);
    EXPECT_EQ(std::uint32_t(info.mWidth), 47u) << "a failed open must not change the settings";
    ASSERT_EQ(
        Open(Write("other.synthex", std::string(kFieldsOnly) + std::string("\0rubbish", 8)), instance).result,
        0);
    ASSERT_EQ(GetInfo(path, nullptr, opened, info).result, 0);
    EXPECT_EQ(std::uint32_t(info.mWidth), 16u);
    Close(opened);
}

// Selector 38 tells the size of the preferences and asks nothing; of a file and a first-time flag it writes
// the file's settings and shows no dialog.
TEST_F(InfoTest, PreferencesOfAFile) {
    const std::u16string path = Write("clip.synthex", kDistinctSettings);
    auto access = HostRecord<imFileAccessRec8>();
    auto prefs = HostRecord<imGetPrefsRec>();
    prefs.mPrefs = nullptr;
    for (const char16_t* const file : {u"/none", path.c_str()})
        for (const bool firstTime : {false, true}) {
            access.mFilePath = file;
            prefs.mFirstTime = firstTime;
            auto expected = prefs;
            expected.mPrefsLength = 10240;
            EXPECT_EQ(mBundle.Call(kSelector_GetPrefs, &access, &prefs).result, 0);
            EXPECT_EQ(Bytes(prefs), Bytes(expected));
        }

    std::string buffer(10240, '\x77');
    prefs.mPrefs = buffer.data();
    prefs.mPrefsLength = 0;
    ASSERT_EQ(mBundle.Call(kSelector_GetPrefs, &access, &prefs).result, 0);
    EXPECT_EQ(std::int32_t(prefs.mPrefsLength), 10240);
    EXPECT_EQ(buffer.find_first_not_of('\x77', std::strlen(buffer.c_str()) + 1), std::string::npos)
        << "written past the text";
}

} // namespace
