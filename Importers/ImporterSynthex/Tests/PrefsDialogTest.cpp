// The dialog, worked by scripts through the loaded plug-in and its own layout. Faults sought: a control that
// writes another setting than its own, a choice that is off by a row, a follow-up that is missing or one too
// many.
#include "PrefsFixture.h"

#include <fstream>
#include <limits>
#include <map>
#include <sstream>

namespace {

constexpr std::int64_t kSecond = 254016000000;

/// The places where two settings differ, with the values of the second.
Json Changes(const Json& before, const Json& after) {
    Json changes = Json::object();
    for (const Json& step : Json::diff(before, after)) {
        EXPECT_EQ(step["op"], "replace");
        changes[step["path"].get<std::string>()] = step["value"];
    }
    return changes;
}

// One edit, and the whole difference that it makes to the settings as a JSON patch.
TEST_F(PrefsTest, EachControlWritesItsOwnSettingAndNothingElse) {
    const struct {
        const char* action;
        Json changed; ///< places and their new values
    } kRows[] = {
        {"", Json::object()},
        {"frameWidthID=720", {{"/mFrameWidth", 720}}},
        {"frameHeightID=32768", {{"/mFrameHeight", 32768}}},
        {"fieldTypePopupID=Progressive", {{"/mFieldType", 0}}},
        {"fieldTypePopupID=Lower Field First", {{"/mFieldType", 2}}},
        {"pixelFormatPopupID=0", {{"/mPixelFormat", 1634887522}}},
        {"pixelAspectPopupID=3", {{"/mFramePAR/denominator", 11}, {"/mFramePAR/numerator", 12}}},
        {"colorRenderingTypePopupID=0", {{"/mRenderFormat", 0}}},
        {"drawFrameNumberCBID=false", Json::object()}, // not part of the text
        // 100 frames stay 100 frames: 10 s at 10 fps.
        {"frameRatePopupID=10 fps",
         {{"/mVideoDuration/ticks", 2540160000000}, {"/mVideoFrameRate/ticksperframe", 25401600000}}},
        {"durationFramesTextID=2", {{"/mVideoDuration/ticks", 16951334400}}},
        {"durationSecondsTextID=1", {{"/mVideoDuration/ticks", 254270016000}}},
    };
    const Json before = Edited(kDistinctSettings, "");
    for (const auto& row : kRows)
        EXPECT_EQ(Changes(before, Edited(kDistinctSettings, row.action)), row.changed) << row.action;
}

// Every choice of the three fixed popups, both ways: the item stores its value, and the value shows its item.
TEST_F(PrefsTest, ChoicesStoreAndShowTheirValues) {
    std::ifstream file(SYNTHEX_SOURCE_DIR "/Importers/ImporterSynthex/Tests/Data/Choices.txt");
    std::map<std::string, Json> labels;
    std::string line;
    while (std::getline(file, line)) {
        if (line.starts_with('#')) continue;
        std::istringstream fields(line);
        std::string popup, label, value;
        std::getline(std::getline(std::getline(fields, popup, '|'), label, '|'), value);
        const std::size_t index = labels[popup].size();
        labels[popup].push_back(label);

        const Json settings = Edited(kDistinctSettings, popup + "=" + std::to_string(index));
        const auto& ratio = settings["mFramePAR"];
        std::uint32_t code = 0;
        std::memcpy(&code, value.data(), sizeof code);
        const std::map<std::string, std::pair<std::string, std::string>> kFoundAndExpected{
            {"frameRatePopupID", {settings["mVideoFrameRate"]["ticksperframe"].dump(), value}},
            {"pixelFormatPopupID", {settings["mPixelFormat"].dump(), std::to_string(code)}},
            {"pixelAspectPopupID", {ratio["numerator"].dump() + "/" + ratio["denominator"].dump(), value}},
        };
        EXPECT_EQ(kFoundAndExpected.at(popup).first, kFoundAndExpected.at(popup).second) << label;

        Edited(settings.dump(), "");
        EXPECT_EQ(mState[popup]["value"], index) << label;
    }
    ASSERT_EQ(labels.size(), 3u);
    for (const auto& [popup, list] : labels) EXPECT_EQ(mState[popup]["items"], list);
}

// All 24 channels: three pairs of colors, two slots, four edits. A swapped slot, channel or color shows.
TEST_F(PrefsTest, EachColorEditWritesItsChannel) {
    const char* const kColors[][2] = {{"mUpperFieldColor", "mLowerFieldColor"},
                                      {"mTopGradiantColorStart", "mBottomGradiantColorStart"},
                                      {"mTopGradiantColorEnd", "mBottomGradiantColorEnd"}};
    for (int choice = 0; choice < 3; ++choice) {
        const std::string prefs = Changed({{"mRenderFormat", choice == 0 ? 0 : 1}});
        const std::string choose = "chooseColorPopupID=" + std::to_string(choice);
        const Json before = Edited(prefs, choose), shown = mState;
        for (int slot = 0; slot < 2; ++slot) {
            for (const std::string channel : {"Red", "Green", "Blue", "Alpha"}) {
                const std::string id = "chooseColor" + channel + "TextID" + std::to_string(slot);
                const std::string path = std::string("/") + kColors[choice][slot] + "/m" + channel + "Part";
                EXPECT_EQ(shown[id]["value"], before[Json::json_pointer(path)]) << "unscaled";
                EXPECT_EQ(Changes(before, Edited(prefs, choose + "; " + id + "=2.5")), Json({{path, 2.5}}));
                EXPECT_EQ(mState[id]["value"], 2.5) << "nothing is clamped";
            }
            // The picker changes all but alpha; a cancelled one changes nothing.
            const std::string press = choose + "; chooseColorButtonID" + std::to_string(slot);
            NotingPlatform accepting(press, "color=0.75,0.5,1.25,0.125");
            Json picked = before, &color = picked[kColors[choice][slot]];
            const Json asked{color["mRedPart"], color["mGreenPart"], color["mBluePart"], color["mAlphaPart"]};
            color.update({{"mRedPart", 0.75}, {"mGreenPart", 0.5}, {"mBluePart", 1.25}});
            EXPECT_EQ(Edit(prefs, accepting).Settings(), picked) << press;
            ASSERT_EQ(accepting.mColors.size(), 1u);
            const auto& offered = accepting.mColors[0];
            EXPECT_EQ(Json({offered.mRed, offered.mGreen, offered.mBlue, offered.mAlpha}), asked);
            EXPECT_EQ(mState["chooseColorBlueTextID" + std::to_string(slot)]["value"], 1.25) << press;
            EXPECT_EQ(Edited(prefs, press, "color=cancel"), before) << press;
        }
    }
}

// An edit keeps the exact number that was typed until something sets it anew: then it shows what the settings
// hold.
TEST_F(PrefsTest, APixelFormatRefreshesTheColors) {
    Edited(kDistinctSettings, "chooseColorRedTextID0=0.1");
    EXPECT_EQ(State("chooseColorRedTextID0"), 0.1);
    Edited(kDistinctSettings, "chooseColorRedTextID0=0.1; pixelFormatPopupID=0");
    EXPECT_EQ(State("chooseColorRedTextID0"), static_cast<double>(0.1f));
}

// Titles, grayed items and the second button in every state that edits lead to.
TEST_F(PrefsTest, ColorControlsFollowTheRenderFormat) {
    const Json kFrame{"Frame Color", "[unused]"}, kFields{"Upper Field Color", "Lower Field Color"},
        kEnds{"Top Color", "Bottom Color"};
    const std::string fields = "colorRenderingTypePopupID=0", gradient = "colorRenderingTypePopupID=1",
                      end = "chooseColorPopupID=2";
    const struct {
        int fieldType, renderFormat;
        std::string actions;
        Json titles;
        bool button1;
        int choice;
    } kRows[] = {
        {0, 0, "", kFrame, false, 0},
        {1, 0, "", kFields, true, 0},
        {7, 0, "", kFields, true, 0},
        {0, 1, "", kEnds, false, 1},
        {2, 9, "", kEnds, true, 1},
        {2, 1, end, kEnds, true, 2},
        {2, 0, gradient, kEnds, true, 1},
        // Back to field colors and once more to the gradient: the start colors come first again.
        {0, 1, end + "; " + fields, kFrame, false, 0},
        {2, 1, end + "; " + fields + "; " + gradient, kEnds, true, 1},
        // The titles do not follow the field type by itself.
        {1, 0, "fieldTypePopupID=0", kFields, false, 0},
        {0, 0, "fieldTypePopupID=2", kFrame, true, 0},
        {0, 0, "fieldTypePopupID=2; " + gradient + "; " + fields, kFields, true, 0},
    };
    for (const auto& row : kRows) {
        Edited(Changed({{"mFieldType", row.fieldType}, {"mRenderFormat", row.renderFormat}}), row.actions);
        const Json state{State("chooseColorButtonID0", "title"), State("chooseColorButtonID1", "title")};
        EXPECT_EQ(state, row.titles) << row.fieldType << row.renderFormat << row.actions;
        EXPECT_EQ(State("chooseColorButtonID1", "enabled"), row.button1) << row.fieldType << row.actions;
        EXPECT_EQ(State("chooseColorPopupID"), row.choice) << row.renderFormat << row.actions;
        EXPECT_EQ(State("chooseColorPopupID", "disabledItems"),
                  row.choice == 0 ? Json({1, 2}) : Json::array({0}));
        EXPECT_EQ(State("chooseColorPopupID", "items").size(), 3u) << "items are added once";
    }
}

// Frames, seconds and ticks in every direction, at rates that divide the second and ones that do not.
TEST_F(PrefsTest, TimingKeepsFramesAndSecondsTogether) {
    const std::int64_t k25 = kSecond / 25, k5994 = kSecond * 1001 / 60000, kMany = 1000003 * k5994;
    const struct {
        std::int64_t rate, duration;
        const char* actions;
        std::int64_t ticks;
        double frames, seconds;
    } kRows[] = {
        {k25, kSecond * 2, "", kSecond * 2, 50, 2},
        {k25, kSecond, "durationSecondsTextID=2", kSecond * 2, 50, 2},
        {k25, kSecond * 2, "frameRatePopupID=PAL HD - 50 fps", kSecond, 50, 1},
        {k25, kSecond, "durationSecondsTextID=0", k25, 1, 0.04}, // never shorter than one frame
        {k25, kSecond, "durationSecondsTextID=0.019", k25, 1, 0.04},
        {k25, kSecond, "durationFramesTextID=0", 0, 0, 0},                // but no minimum here
        {k25, kSecond, "durationSecondsTextID=1.03", 26 * k25, 26, 1.04}, // the nearest frame, not the lower
        {k25, kSecond, "durationSecondsTextID=1.01", 25 * k25, 25, 1},
        // Frames that seconds as a double can't quite say: opening must not shorten the clip.
        {k5994, 3 * k5994, "", 3 * k5994, 3, static_cast<double>(3 * k5994) / kSecond},
        {k5994, kMany, "", kMany, 1000003, static_cast<double>(kMany) / kSecond},
        // What settings files may bring.
        {k25, 0, "", k25, 1, 0.04},
        {k25, -kSecond, "", k25, 1, 0.04},
        {k25, -5 * k25 / 2, "frameRatePopupID=PAL HD - 50 fps", k25 / 2, 1, 0.02},
        {0, kSecond, "", kSecond, 0, 1},
        {0, 0, "", 0, 0, 0},
        {-k25, kSecond, "", kSecond, -25, 1},
    };
    for (const auto& row : kRows) {
        const std::string prefs = Changed({{"mVideoFrameRate", {{"ticksperframe", row.rate}}},
                                           {"mVideoDuration", {{"ticks", row.duration}}}});
        const Json settings = Edited(prefs, row.actions);
        EXPECT_EQ(Json({settings["mVideoDuration"]["ticks"], State("durationFramesTextID"),
                        State("durationSecondsTextID")}),
                  Json({row.ticks, row.frames, row.seconds}))
            << row.rate << " " << row.duration << " " << row.actions;
    }
}

// Conversions out of a double's or an integer's range would be undefined.
TEST_F(PrefsTest, ExtremeTimesOpenAndClose) {
    for (const std::int64_t rate : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1},
                                    std::int64_t{1}, std::numeric_limits<std::int64_t>::max()})
        for (const std::int64_t ticks :
             {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()})
            Edited(Changed({{"mVideoFrameRate", {{"ticksperframe", rate}}},
                            {"mVideoDuration", {{"ticks", ticks}}}}),
                   "frameRatePopupID=1000 fps");
}

// A setting that no item shows must survive a dialog in which nobody touched it.
TEST_F(PrefsTest, UnknownSettingsShowTheFirstItemAndStay) {
    const struct {
        const char* popup;
        const char* key;
        Json value;
        int shown;
    } kRows[] = {
        {"fieldTypePopupID", "mFieldType", 0, 0},
        {"fieldTypePopupID", "mFieldType", 1, 1},
        {"fieldTypePopupID", "mFieldType", 2, 2},
        {"fieldTypePopupID", "mFieldType", 3, 0},
        {"pixelFormatPopupID", "mPixelFormat", 12345, 0},
        {"frameRatePopupID", "mVideoFrameRate", {{"ticksperframe", 12345}}, 0},
        {"pixelAspectPopupID", "mFramePAR", {{"numerator", 20}, {"denominator", 22}}, 1}, // equal to 10/11
        {"pixelAspectPopupID", "mFramePAR", {{"numerator", 7}, {"denominator", 0}}, 0},
    };
    for (const auto& row : kRows) {
        const std::string prefs = Changed({{row.key, row.value}}), choice = std::to_string(row.shown);
        EXPECT_EQ(Edited(prefs, "")[row.key], row.value);
        EXPECT_EQ(State(row.popup), row.shown) << row.key << row.value;
        // Chosen by somebody, it counts: as if it had not been shown before.
        const auto chosen = [&](const std::string& first) {
            return Edited(prefs, first + row.popup + "=" + choice)[row.key];
        };
        EXPECT_EQ(chosen(""), chosen(row.popup + std::string("=2; "))) << row.key << row.value;
    }
    EXPECT_EQ(Edited(Changed({{"mFrameWidth", 4294967295u}}), "")["mFrameWidth"], 4294967295u)
        << "limits are for people";
    EXPECT_EQ(State("frameWidthID"), 4294967295.0);
}

/// Does to a dialog what no person can: gives controls values ("ID=NUMBER; ..."), whatever their limits, and
/// sends their change messages. Then it presses a color button, and OK.
class ProgramPlatform : public NotingPlatform {
  public:
    explicit ProgramPlatform(const char* values) : mValues(values) {}

  protected:
    void ShowDialog(corvane::DialogModel& dialog, lumui::ui::UI_Node* parent) override {
        for (const auto& [id, value] : corvane::testing::Script(mValues).actions) {
            corvane::ControlModel& control = *dialog.Find(id);
            if (auto* const popup = dynamic_cast<corvane::PopupModel*>(&control))
                popup->SetValue(std::stol(*value));
            else
                dynamic_cast<corvane::NumberModel&>(control).SetValue(std::stod(*value));
            dialog.Deliver(control);
        }
        dialog.Press(*dialog.Find("chooseColorButtonID1"));
        NotingPlatform::ShowDialog(dialog, parent);
    }

  private:
    const char* mValues;
};

// Values that only a program can bring: no choice at all, a disabled item, numbers beyond the limits.
TEST_F(PrefsTest, HandlersTakeWhatProgramsSet) {
    const struct {
        const char* values;
        Json changed;
        const char* title;
    } kRows[] = {
        // No color is chosen: the edits write nothing, the buttons ask nothing.
        {"pixelFormatPopupID=-1; pixelFormatPopupID=48; pixelAspectPopupID=-1; frameRatePopupID=-1; "
         "chooseColorPopupID=-1; chooseColorRedTextID0=0.5; frameWidthID=-0.5; frameHeightID=719.9; "
         "durationFramesTextID=-2.9",
         {{"/mFrameWidth", 0}, {"/mFrameHeight", 719}, {"/mVideoDuration/ticks", -16951334400}},
         ""},
        // The gradient's disabled item: its edits write the field colors, its buttons ask nothing.
        {"chooseColorPopupID=0; chooseColorGreenTextID1=0.5",
         {{"/mLowerFieldColor/mGreenPart", 0.5}},
         "Lower Field Color"},
    };
    const Json before = Edited(kDistinctSettings, "");
    for (const auto& row : kRows) {
        ProgramPlatform platform(row.values);
        const Outcome outcome = Edit(kDistinctSettings, platform);
        ASSERT_EQ(outcome.result, 0) << outcome.alert;
        EXPECT_EQ(Changes(before, outcome.Settings()), row.changed);
        EXPECT_EQ(State("chooseColorButtonID1", "title"), row.title);
    }
}

} // namespace
