// Faults sought: a rule of reading that is off for one type, keys or fields that are swapped, text that does
// not read back, damaged text that gets through or crashes.
#include "SynthexInfo.h"

#include <functional>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "PluginFixture.h"

namespace {

using namespace lumcore::serialization;

SynthexInfo Read(const std::string& text) {
    return Serializer<SynthexInfo>::FromUTF8String(reinterpret_cast<const unsigned char*>(text.c_str()),
                                                   text.size() + 1);
}

std::string Write(const SynthexInfo& info) {
    return GetJSONUTF8String(JSONConvert<SynthexInfo>::ToJSON(info), false);
}

std::string Show(const FloatColor& color) {
    std::ostringstream text;
    text << color.mAlphaPart << ' ' << color.mRedPart << ' ' << color.mGreenPart << ' ' << color.mBluePart;
    return text.str();
}

/// All fields as text, typed here apart from the code's own list.
std::string Show(const SynthexInfo& info) {
    std::ostringstream text;
    text << info.mPixelFormat << '|' << info.mFrameWidth << 'x' << info.mFrameHeight << '|'
         << info.mFramePAR.GetNumerator() << ':' << info.mFramePAR.GetDenominator() << '|' << info.mFieldType
         << '|' << info.mRenderFormat << '|' << Show(info.mUpperFieldColor) << '|'
         << Show(info.mLowerFieldColor) << '|' << Show(info.mTopGradiantColorStart) << '|'
         << Show(info.mTopGradiantColorEnd) << '|' << Show(info.mBottomGradiantColorStart) << '|'
         << Show(info.mBottomGradiantColorEnd) << '|' << info.mVideoDuration.GetTicks() << '|'
         << info.mVideoFrameRate.GetTicksPerFrame() << '|' << Mosk::ToUTF8(info.mSavedFilePath) << '|'
         << Mosk::ToUTF8(info.mClipName) << '|' << info.mDrawFrameNumber;
    return text.str();
}

constexpr char kDefaults[] =
    "1634887522|720x480|40:33|2|0|1 1 0.5 0.25|1 0 1 0|1 1 0 0|1 0.5 0.5 0.5|1 0 1 0|1 1 0.5 0.25|"
    "15240960000000|8467200000||Default Frame|1";
constexpr char kDistinct[] =
    "1650946657|47x33|128:117|1|1|0.9 0.11 0.12 0.13|0.8 0.21 0.22 0.23|0.7 0.31 0.32 0.33|"
    "0.6 0.41 0.42 0.43|0.5 0.51 0.52 0.53|0.4 0.61 0.62 0.63|847566720001|8475667200||"
    "Default Frame|1";
constexpr char kNothing[] =
    "0|0x0|1:1|0|0|1 0 0 0|1 0 0 0|1 0 0 0|1 0 0 0|1 0 0 0|1 0 0 0|0|0||Default Frame|1";

TEST(Settings, Defaults) {
    EXPECT_EQ(Show(SynthexInfo()), kDefaults);
    EXPECT_EQ(Show(Read("{}")), kNothing);
}

TEST(Settings, EveryFieldHasItsOwnKeyBothWays) {
    SynthexInfo info = Read(kDistinctSettings);
    EXPECT_EQ(Show(info), kDistinct);
    info.mSavedFilePath = u"/some/path";
    info.mClipName = u"path";
    info.mDrawFrameNumber = false;
    const std::string text = Write(info);
    EXPECT_EQ(Show(Read(text)), kDistinct) << "the unwritten fields are reset";
    EXPECT_EQ(Write(Read(text)), text);
}

TEST(Settings, TheTextOfTheDefaults) {
    EXPECT_EQ(
        Write(SynthexInfo()),
        R"({"mBottomGradiantColorEnd":{"mAlphaPart":1.0,"mBluePart":0.25,"mGreenPart":0.5,"mRedPart":1.0},)"
        R"("mBottomGradiantColorStart":{"mAlphaPart":1.0,"mBluePart":0.0,"mGreenPart":1.0,"mRedPart":0.0},)"
        R"("mFieldType":2,"mFrameHeight":480,"mFramePAR":{"denominator":33,"numerator":40},"mFrameWidth":720,)"
        R"("mLowerFieldColor":{"mAlphaPart":1.0,"mBluePart":0.0,"mGreenPart":1.0,"mRedPart":0.0},)"
        R"("mPixelFormat":1634887522,"mRenderFormat":0,)"
        R"("mTopGradiantColorEnd":{"mAlphaPart":1.0,"mBluePart":0.5,"mGreenPart":0.5,"mRedPart":0.5},)"
        R"("mTopGradiantColorStart":{"mAlphaPart":1.0,"mBluePart":0.0,"mGreenPart":0.0,"mRedPart":1.0},)"
        R"("mUpperFieldColor":{"mAlphaPart":1.0,"mBluePart":0.25,"mGreenPart":0.5,"mRedPart":1.0},)"
        R"("mVideoDuration":{"ticks":15240960000000},"mVideoFrameRate":{"ticksperframe":8467200000}})");
    SynthexInfo info;
    info.mUpperFieldColor.mRedPart = 0.1f; // widened exactly, not as 0.1
    EXPECT_NE(Write(info).find("0.10000000149011612"), std::string::npos);
}

struct RuleRow {
    const char* text;
    std::function<double(const SynthexInfo&)> field;
    double value;
};

TEST(Settings, RulesOfReading) {
    const auto width = [](const SynthexInfo& i) { return double(i.mFrameWidth); };
    const auto fieldType = [](const SynthexInfo& i) { return double(i.mFieldType); };
    const auto render = [](const SynthexInfo& i) { return double(i.mRenderFormat); };
    const auto ticks = [](const SynthexInfo& i) { return double(i.mVideoDuration.GetTicks()); };
    const auto red = [](const SynthexInfo& i) { return double(i.mUpperFieldColor.mRedPart); };
    const auto alpha = [](const SynthexInfo& i) { return double(i.mUpperFieldColor.mAlphaPart); };
    const auto numerator = [](const SynthexInfo& i) { return double(i.mFramePAR.GetNumerator()); };
    const RuleRow rows[] = {
        {R"({"mFrameWidth": -1})", width, 4294967295.0},
        {R"({"mFrameWidth": 4294967298})", width, 2},
        {R"({"mFrameWidth": 18446744073709551615})", width, 4294967295.0},
        {R"({"mFieldType": -2})", fieldType, -2},
        {R"({"mFieldType": 4294967295})", fieldType, -1},
        {R"({"mRenderFormat": -1})", render, 4294967295.0},
        {R"({"mVideoDuration": {"ticks": 18446744073709551615}})", ticks, -1},
        {R"({"mVideoDuration": {}})", ticks, 0},
        {R"({"mUpperFieldColor": {"mRedPart": 1}})", red, 1},
        {R"({"mUpperFieldColor": {"mRedPart": -3}})", red, -3},
        {R"({"mUpperFieldColor": {"mRedPart": 1e300}})", red, std::numeric_limits<double>::infinity()},
        {R"({"mUpperFieldColor": {"mRedPart": 1}})", alpha, 0},
        {R"({"mLowerFieldColor": {"mRedPart": 1}})", alpha, 1},
        {R"({"mFramePAR": {"denominator": 3}})", numerator, 0},
        {R"({"mFrameWidth": 1, "mFrameWidth": 2})", width, 2},
        {R"({"SerializerWrappedObject": {"mFrameWidth": 3}, "mFrameWidth": 4})", width, 3},
    };
    for (const RuleRow& row : rows) EXPECT_EQ(row.field(Read(row.text)), row.value) << row.text;
}

TEST(Settings, WrongKindsAreRefused) {
    for (const char* const text :
         {"[]", "1", "null", "\"x\"", R"({"SerializerWrappedObject": null})",
          R"({"SerializerWrappedObject": []})", R"({"mFrameWidth": 720.0})", R"({"mFrameWidth": "720"})",
          R"({"mFrameWidth": null})", R"({"mPixelFormat": true})", R"({"mFieldType": 1.0})",
          R"({"mRenderFormat": []})", R"({"mFramePAR": 1})", R"({"mFramePAR": {"numerator": 1.5}})",
          R"({"mUpperFieldColor": [1, 1, 1, 1]})", R"({"mUpperFieldColor": {"mRedPart": "1"}})",
          R"({"mVideoDuration": 5})", R"({"mVideoDuration": {"ticks": 1.0}})",
          R"({"mVideoFrameRate": {"ticksperframe": false}})"})
        EXPECT_THROW(Read(text), boost::bad_any_cast) << text;
    for (const char* const text : {"", "{", "{} x"}) {
        try {
            Read(text);
            ADD_FAILURE() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "JSON not well-formed");
        }
    }
}

TEST(Settings, UnterminatedTextIsDelimitedByItsSize) {
    const std::string text = R"({"mFrameWidth": 5}garbage)";
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    EXPECT_EQ(Serializer<SynthexInfo>::FromUTF8String(bytes, 18).mFrameWidth, 5u);
    EXPECT_THROW(Serializer<SynthexInfo>::FromUTF8String(bytes, 0), std::runtime_error);
}

// Every truncation and every one-byte change either reads or is refused as one of the two errors; where it
// reads, the record's own text reads back the same.
TEST(Settings, DamagedTextReadsOrIsRefused) {
    const std::string original = Write(SynthexInfo());
    const auto check = [](const std::string& text) {
        try {
            const std::string again = Write(Read(text));
            EXPECT_EQ(Write(Read(again)), again) << text;
        } catch (const boost::bad_any_cast&) {
        } catch (const std::runtime_error&) {
        }
    };
    for (std::size_t length = 1; length < original.size(); ++length)
        EXPECT_THROW(Read(original.substr(0, length)), std::runtime_error) << length;
    for (std::size_t at = 0; at < original.size(); ++at)
        for (const char byte : {'\x01', '"', '{', '}', '-', '.', 'e', '9', '\x80', '\xFF'}) {
            std::string changed = original;
            changed[at] = byte;
            check(changed);
        }
}

} // namespace
