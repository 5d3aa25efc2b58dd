// Faults sought: fields that are swapped, written at the wrong byte or read from the wrong store; instances
// that leak or are lost.
#include "PluginFixture.h"

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
    struct Row {
        const char* times;
        std::uint32_t scale, sampleSize, duration;
    };
    for (
        const Row& row :
        {Row{R"("mVideoDuration":{"ticks":100},"mVideoFrameRate":{"ticksperframe":0})", 0, 0, 0},
         Row{R"("mVideoDuration":{"ticks":100},"mVideoFrameRate":{"ticksperframe":-7})", 0, 0, 0},
         Row{R"("mVideoDuration":{"ticks":-1},"mVideoFrameRate":{"ticksperframe":10160640000})", 25, 1,
             4294967295u},
         // 4,294,968 frames of 1001: the product leaves 32 bits
         Row{R"("mVideoDuration":{"ticks":18201359701324800},"mVideoFrameRate":{"ticksperframe":4237833600})",
             60000, 1001, 4294968u * 1001u}}) {
        imFileInfoRec8 info;
        const std::string prefs = "{" + std::string(row.times) + "}";
        ASSERT_EQ(GetInfo(u"/none", prefs.c_str(), nullptr, info).result, 0);
        EXPECT_EQ(std::uint32_t(info.mScale), row.scale) << prefs;
        EXPECT_EQ(std::uint32_t(info.mSampleSize), row.sampleSize) << prefs;
        EXPECT_EQ(std::uint32_t(info.mDuration), row.duration) << prefs;
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

// Selector 38 of a file and a first-time flag writes the file's settings and shows no dialog.
TEST_F(InfoTest, PreferencesOfAFile) {
    const std::u16string path = Write("clip.synthex", kDistinctSettings);
    auto access = HostRecord<imFileAccessRec8>();
    access.mFilePath = path.c_str();
    auto prefs = HostRecord<imGetPrefsRec>();
    prefs.mPrefs = nullptr;
    EXPECT_EQ(mBundle.Call(kSelector_GetPrefs, &access, &prefs).result, 0);
    EXPECT_EQ(Bytes(prefs), ExpectedBytes(61).Put<char*>(0, nullptr).Put<std::int32_t>(8, 10240));

    std::string buffer(10240, '\x77');
    prefs.mPrefs = buffer.data();
    prefs.mPrefsLength = 0;
    ASSERT_EQ(mBundle.Call(kSelector_GetPrefs, &access, &prefs).result, 0);
    EXPECT_EQ(std::int32_t(prefs.mPrefsLength), 10240);
    const std::size_t length = std::strlen(buffer.c_str());
    EXPECT_EQ(buffer.find_first_not_of('\x77', length + 1), std::string::npos) << "written past the text";
    // The text is the settings: a clip without a file that gets it is the same clip.
    imFileInfoRec8 fromFile, fromText;
    void* instance = nullptr;
    Open(path, instance);
    ASSERT_EQ(GetInfo(path, nullptr, instance, fromFile).result, 0);
    ASSERT_EQ(GetInfo(u"/none", buffer.c_str(), nullptr, fromText).result, 0);
    Close(fromText.mPrivateData);
    fromText.mPrivateData = fromFile.mPrivateData;
    fromText.mPrefs = fromFile.mPrefs;
    EXPECT_EQ(Bytes(fromText), Bytes(fromFile));
    Close(instance);
}

} // namespace
