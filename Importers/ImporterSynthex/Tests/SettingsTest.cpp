// Faults sought: a rule of reading that is off for one type, keys or fields that are swapped, text that does
// not read back, damaged text that gets through or crashes.
#include "SynthexInfo.h"

#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

/// As the record holds it: numbers with a fraction are floats.
nlohmann::json AsFloats(nlohmann::json value) {
    if (value.is_number_float()) return static_cast<double>(value.get<float>());
    for (nlohmann::json& member : value)
        if (value.is_object()) member = AsFloats(member);
    return value;
}

// That each key reads into its own field, the renderer's, the dialog's and the information's tests show.
TEST(Settings, EveryFieldIsWrittenUnderItsKey) {
    SynthexInfo info = Read(kDistinctSettings);
    info.mSavedFilePath = u"/some/path";
    info.mClipName = u"path";
    info.mDrawFrameNumber = false;
    const std::string text = Write(info);
    EXPECT_EQ(nlohmann::json::parse(text), AsFloats(nlohmann::json::parse(kDistinctSettings)));
    const SynthexInfo back = Read(text);
    EXPECT_EQ(back.mSavedFilePath, u"") << "the unwritten fields are reset";
    EXPECT_EQ(back.mClipName, u"Default Frame");
    EXPECT_TRUE(back.mDrawFrameNumber);
}

TEST(Settings, WhatIsMissingIsNothing) {
    const char* const kBlack = R"({"mAlphaPart":1.0,"mBluePart":0.0,"mGreenPart":0.0,"mRedPart":0.0})";
    const auto nothing = nlohmann::json::parse(Write(Read("{}")));
    EXPECT_EQ(nothing.size(), 14u);
    for (const auto& [key, value] : nothing.items())
        EXPECT_EQ(value.dump(), value.contains("mRedPart")        ? kBlack
                                : value.contains("numerator")     ? R"({"denominator":1,"numerator":1})"
                                : value.contains("ticks")         ? R"({"ticks":0})"
                                : value.contains("ticksperframe") ? R"({"ticksperframe":0})"
                                                                  : "0")
            << key;
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

TEST(Settings, RulesOfReading) {
    const struct {
        const char *text, *member, *value; ///< what is read, and a part of what is written then
    } kRows[] = {
        {R"({"mFrameWidth": -1})", "mFrameWidth", "4294967295"},
        {R"({"mFrameWidth": 4294967298})", "mFrameWidth", "2"},
        {R"({"mFrameWidth": 18446744073709551615})", "mFrameWidth", "4294967295"},
        {R"({"mFieldType": -2})", "mFieldType", "-2"},
        {R"({"mFieldType": 4294967295})", "mFieldType", "-1"},
        {R"({"mRenderFormat": -1})", "mRenderFormat", "4294967295"},
        {R"({"mVideoDuration": {"ticks": 18446744073709551615}})", "ticks", "-1"},
        {R"({"mVideoDuration": {}})", "ticks", "0"},
        {R"({"mUpperFieldColor": {"mRedPart": 1}})", "mRedPart", "1.0"},
        {R"({"mUpperFieldColor": {"mRedPart": -3}})", "mRedPart", "-3.0"},
        {R"({"mUpperFieldColor": {"mRedPart": 1e300}})", "mRedPart", "1.7976931348623157e308"},
        {R"({"mUpperFieldColor": {"mRedPart": 1}})", "mAlphaPart", "0.0"},
        {R"({"mLowerFieldColor": {"mRedPart": 1}})", "mAlphaPart", "1.0"},
        {R"({"mFramePAR": {"denominator": 3}})", "numerator", "0"},
        {R"({"mFrameWidth": 1, "mFrameWidth": 2})", "mFrameWidth", "2"},
        {R"({"SerializerWrappedObject": {"mFrameWidth": 3}, "mFrameWidth": 4})", "mFrameWidth", "3"},
    };
    for (const auto& row : kRows) {
        // Of several members with the name the last is meant: the upper field's, of colors.
        const std::string text = Write(Read(row.text)), name = '"' + std::string(row.member) + "\":";
        const std::size_t at = text.rfind(name) + name.size();
        EXPECT_EQ(text.substr(at, text.find_first_of(",}", at) - at), row.value) << row.text;
    }
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

} // namespace
