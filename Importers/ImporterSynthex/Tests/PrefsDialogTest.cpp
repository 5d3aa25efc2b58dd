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

// A control that is missing from the layout, or of another class, would raise an error in the dialog only
// when used.
TEST_F(PrefsTest, TheLayoutHasTheControlsThatTheDialogBinds) {
    const std::map<std::string, std::vector<std::string>> kControls{
        {"UI_Popup",
         {"pixelFormatPopupID", "pixelAspectPopupID", "fieldTypePopupID", "frameRatePopupID",
          "colorRenderingTypePopupID", "chooseColorPopupID"}},
        {"UI_NumberEdit",
         {"frameWidthID", "frameHeightID", "durationSecondsTextID", "durationFramesTextID",
          "chooseColorRedTextID0", "chooseColorRedTextID1", "chooseColorGreenTextID0",
          "chooseColorGreenTextID1", "chooseColorBlueTextID0", "chooseColorBlueTextID1",
          "chooseColorAlphaTextID0", "chooseColorAlphaTextID1"}},
        {"UI_Checkbox", {"drawFrameNumberCBID", "useAsCustomImporterID"}},
        {"UI_TextButton", {"chooseColorButtonID0", "chooseColorButtonID1"}},
        {"UI_Button", {"saveToPathButtonID", "saveFileButtonID", "cancelButton", "okButton"}},
        {"UI_StaticText", {"saveToPathStaticTextID"}},
    };
    Edited(kDistinctSettings, {});
    std::map<std::string, std::vector<std::string>> expected = kControls, found;
    for (const auto& [id, state] : mState.items()) found[state["class"]].push_back(id);
    for (auto& [name, ids] : expected) std::sort(ids.begin(), ids.end());
    EXPECT_EQ(found, expected);
}

// One edit, and the whole difference that it makes to the settings as a JSON patch.
TEST_F(PrefsTest, EachControlWritesItsOwnSettingAndNothingElse) {
    const struct {
        std::vector<std::string> actions;
        const char* difference;
    } kRows[] = {
        {{}, "[]"},
        {{"frameWidthID=720"}, R"([{"op":"replace","path":"/mFrameWidth","value":720}])"},
        {{"frameWidthID=719.9"}, R"([{"op":"replace","path":"/mFrameWidth","value":719}])"},
        {{"frameHeightID=32768"}, R"([{"op":"replace","path":"/mFrameHeight","value":32768}])"},
        {{"fieldTypePopupID=Progressive"}, R"([{"op":"replace","path":"/mFieldType","value":0}])"},
        {{"fieldTypePopupID=Lower Field First"}, R"([{"op":"replace","path":"/mFieldType","value":2}])"},
        {{"pixelFormatPopupID=0"}, R"([{"op":"replace","path":"/mPixelFormat","value":1634887522}])"},
        {{"pixelAspectPopupID=3"},
         R"([{"op":"replace","path":"/mFramePAR/denominator","value":11},{"op":"replace","path":"/mFramePAR/numerator","value":12}])"},
        {{"colorRenderingTypePopupID=0"}, R"([{"op":"replace","path":"/mRenderFormat","value":0}])"},
        {{"drawFrameNumberCBID=false"}, "[]"}, // not part of the text
        // 100 frames stay 100 frames: 10 s at 10 fps.
        {{"frameRatePopupID=10 fps"},
         R"([{"op":"replace","path":"/mVideoDuration/ticks","value":2540160000000},{"op":"replace","path":"/mVideoFrameRate/ticksperframe","value":25401600000}])"},
        {{"durationFramesTextID=2"},
         R"([{"op":"replace","path":"/mVideoDuration/ticks","value":16951334400}])"},
        {{"durationSecondsTextID=1"},
         R"([{"op":"replace","path":"/mVideoDuration/ticks","value":254270016000}])"},
    };
    const Json before = Edited(kDistinctSettings, {});
    for (const auto& row : kRows)
        EXPECT_EQ(Json::diff(before, Edited(kDistinctSettings, row.actions)), Json::parse(row.difference))
            << (row.actions.empty() ? "no edit" : row.actions[0]);
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

        const Json settings = Edited(kDistinctSettings, {popup + "=" + std::to_string(index)});
        const auto& ratio = settings["mFramePAR"];
        std::uint32_t code = 0;
        std::memcpy(&code, value.data(), sizeof code);
        const std::map<std::string, std::pair<std::string, std::string>> kFoundAndExpected{
            {"frameRatePopupID", {settings["mVideoFrameRate"]["ticksperframe"].dump(), value}},
            {"pixelFormatPopupID", {settings["mPixelFormat"].dump(), std::to_string(code)}},
            {"pixelAspectPopupID", {ratio["numerator"].dump() + "/" + ratio["denominator"].dump(), value}},
        };
        EXPECT_EQ(kFoundAndExpected.at(popup).first, kFoundAndExpected.at(popup).second) << label;

        Edited(settings.dump(), {});
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
        const Json before = Edited(prefs, {choose});
        for (int slot = 0; slot < 2; ++slot) {
            for (const std::string channel : {"Red", "Green", "Blue", "Alpha"}) {
                const std::string id = "chooseColor" + channel + "TextID" + std::to_string(slot);
                const std::string path = std::string("/") + kColors[choice][slot] + "/m" + channel + "Part";
                const Json settings = Edited(prefs, {choose, id + "=2.5"});
                EXPECT_EQ(mState[id]["value"], 2.5) << "nothing is clamped";
                EXPECT_EQ(Json::diff(before, settings),
                          Json({{{"op", "replace"}, {"path", path}, {"value", 2.5}}}));
                EXPECT_EQ(before[Json::json_pointer(path)], [&] {
                    Edited(prefs, {choose});
                    return mState[id]["value"];
                }()) << "the edit shows the channel's value, unscaled";
            }
        }
    }
}

// An edit keeps the exact number that was typed until something sets it anew: then it shows what the settings
// hold.
TEST_F(PrefsTest, APixelFormatRefreshesTheColors) {
    Edited(kDistinctSettings, {"chooseColorRedTextID0=0.1"});
    EXPECT_EQ(mState["chooseColorRedTextID0"]["value"], 0.1);
    Edited(kDistinctSettings, {"chooseColorRedTextID0=0.1", "pixelFormatPopupID=0"});
    EXPECT_EQ(mState["chooseColorRedTextID0"]["value"], static_cast<double>(0.1f));
}

// Titles, greyed items and the second button in every state that edits lead to.
TEST_F(PrefsTest, ColorControlsFollowTheRenderFormat) {
    const struct {
        int fieldType, renderFormat;
        std::vector<std::string> actions;
        const char *title0, *title1;
        bool button1;
        int choice;
        std::vector<int> greyed;
    } kRows[] = {
        {0, 0, {}, "Frame Color", "[unused]", false, 0, {1, 2}},
        {1, 0, {}, "Upper Field Color", "Lower Field Color", true, 0, {1, 2}},
        {7, 0, {}, "Upper Field Color", "Lower Field Color", true, 0, {1, 2}},
        {0, 1, {}, "Top Color", "Bottom Color", false, 1, {0}},
        {2, 9, {}, "Top Color", "Bottom Color", true, 1, {0}},
        {2, 1, {"chooseColorPopupID=2"}, "Top Color", "Bottom Color", true, 2, {0}},
        {2, 0, {"colorRenderingTypePopupID=1"}, "Top Color", "Bottom Color", true, 1, {0}},
        // Back to field colors and once more to the gradient: the start colors come first again.
        {0,
         1,
         {"chooseColorPopupID=2", "colorRenderingTypePopupID=0"},
         "Frame Color",
         "[unused]",
         false,
         0,
         {1, 2}},
        {2,
         1,
         {"chooseColorPopupID=2", "colorRenderingTypePopupID=0", "colorRenderingTypePopupID=1"},
         "Top Color",
         "Bottom Color",
         true,
         1,
         {0}},
        // The titles do not follow the field type by itself.
        {1, 0, {"fieldTypePopupID=0"}, "Upper Field Color", "Lower Field Color", false, 0, {1, 2}},
        {0, 0, {"fieldTypePopupID=2"}, "Frame Color", "[unused]", true, 0, {1, 2}},
        {0,
         0,
         {"fieldTypePopupID=2", "colorRenderingTypePopupID=1", "colorRenderingTypePopupID=0"},
         "Upper Field Color",
         "Lower Field Color",
         true,
         0,
         {1, 2}},
    };
    for (const auto& row : kRows) {
        Edited(Changed({{"mFieldType", row.fieldType}, {"mRenderFormat", row.renderFormat}}), row.actions);
        const Json state{mState["chooseColorButtonID0"]["title"], mState["chooseColorButtonID1"]["title"],
                         mState["chooseColorButtonID1"]["enabled"], mState["chooseColorPopupID"]["value"],
                         mState["chooseColorPopupID"]["disabledItems"]};
        const Json expected{row.title0, row.title1, row.button1, row.choice, row.greyed};
        EXPECT_EQ(state, expected) << row.fieldType << row.renderFormat
                                   << (row.actions.empty() ? "" : row.actions.back());
        EXPECT_EQ(mState["chooseColorPopupID"]["items"].size(), 3u) << "items are added once";
    }
}

TEST_F(PrefsTest, ThePickerChangesAllButAlpha) {
    const struct {
        int renderFormat;
        std::vector<std::string> actions;
        const char* color;
    } kRows[] = {
        {0, {"chooseColorButtonID0"}, "mUpperFieldColor"},
        {0, {"chooseColorButtonID1"}, "mLowerFieldColor"},
        {1, {"chooseColorButtonID0"}, "mTopGradiantColorStart"},
        {1, {"chooseColorButtonID1"}, "mBottomGradiantColorStart"},
        {1, {"chooseColorPopupID=2", "chooseColorButtonID0"}, "mTopGradiantColorEnd"},
        {1, {"chooseColorPopupID=2", "chooseColorButtonID1"}, "mBottomGradiantColorEnd"},
    };
    for (const auto& row : kRows) {
        const std::string prefs = Changed({{"mRenderFormat", row.renderFormat}});
        Json expected = Edited(prefs, {});
        const Json before = expected[row.color];
        expected[row.color] = {{"mAlphaPart", before["mAlphaPart"]},
                               {"mRedPart", 0.75},
                               {"mGreenPart", 0.5},
                               {"mBluePart", 1.25}};

        NotingPlatform accepting(Script(row.actions, {"color=0.75,0.5,1.25,0.125"}));
        EXPECT_EQ(Edit(prefs, accepting).Settings(), expected) << row.color;
        ASSERT_EQ(accepting.mColors.size(), 1u);
        const auto& shown = accepting.mColors[0];
        EXPECT_EQ(
            Json({shown.mRed, shown.mGreen, shown.mBlue, shown.mAlpha}),
            Json({before["mRedPart"], before["mGreenPart"], before["mBluePart"], before["mAlphaPart"]}));
        const char slot = row.actions.back().back();
        EXPECT_EQ(mState[std::string("chooseColorBlueTextID") + slot]["value"], 1.25)
            << "the edits show the new color";

        expected[row.color] = before;
        EXPECT_EQ(Edited(prefs, row.actions, {"color=cancel"}), expected) << row.color;
    }
}

// Frames, seconds and ticks in every direction, at rates that divide the second and ones that do not.
TEST_F(PrefsTest, TimingKeepsFramesAndSecondsTogether) {
    const std::int64_t k25 = kSecond / 25, k5994 = kSecond * 1001 / 60000;
    const struct {
        std::int64_t rate, duration;
        std::vector<std::string> actions;
        std::int64_t ticks;
        double frames, seconds;
    } kRows[] = {
        {k25, kSecond * 2, {}, kSecond * 2, 50, 2},
        {k25, kSecond, {"durationSecondsTextID=2"}, kSecond * 2, 50, 2},
        {k25, kSecond * 2, {"frameRatePopupID=PAL HD - 50 fps"}, kSecond, 50, 1},
        {k25, kSecond, {"durationSecondsTextID=0"}, k25, 1, 0.04}, // never shorter than one frame
        {k25, kSecond, {"durationSecondsTextID=0.019"}, k25, 1, 0.04},
        {k25, kSecond, {"durationFramesTextID=0"}, 0, 0, 0}, // but no minimum here
        {k25, kSecond, {"durationFramesTextID=7.9"}, 7 * k25, 7.9, 0.28},
        {k25, kSecond, {"durationSecondsTextID=1.03"}, 26 * k25, 26, 1.04}, // the nearest frame, not the
                                                                            // lower
        {k25, kSecond, {"durationSecondsTextID=1.01"}, 25 * k25, 25, 1},
        // A whole number of frames that seconds as a double can't quite say: opening must not shorten the
        // clip.
        {k5994, 3 * k5994, {}, 3 * k5994, 3, static_cast<double>(3 * k5994) / kSecond},
        {k5994,
         1000003 * k5994,
         {},
         1000003 * k5994,
         1000003,
         static_cast<double>(1000003 * k5994) / kSecond},
        // What settings files may bring.
        {k25, 0, {}, k25, 1, 0.04},
        {k25, -kSecond, {}, -24 * k25, -24, -0.96},
        {0, kSecond, {}, kSecond, 0, 1},
        {0, 0, {}, 0, 0, 0},
        {-k25, kSecond, {}, kSecond, -25, 1},
    };
    for (const auto& row : kRows) {
        const std::string prefs = Changed({{"mVideoFrameRate", {{"ticksperframe", row.rate}}},
                                           {"mVideoDuration", {{"ticks", row.duration}}}});
        const Json settings = Edited(prefs, row.actions);
        const Json state{settings["mVideoDuration"]["ticks"], mState["durationFramesTextID"]["value"],
                         mState["durationSecondsTextID"]["value"]};
        EXPECT_EQ(state, Json({row.ticks, row.frames, row.seconds}))
            << row.rate << " " << row.duration << " " << (row.actions.empty() ? "" : row.actions[0]);
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
                   {"frameRatePopupID=1000 fps"});
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
        EXPECT_EQ(Edited(Changed({{row.key, row.value}}), {})[row.key], row.value);
        EXPECT_EQ(mState[row.popup]["value"], row.shown) << row.key << row.value;
    }
    EXPECT_EQ(Edited(Changed({{"mFrameWidth", 4294967295u}, {"mFrameHeight", 0}}), {})["mFrameWidth"],
              4294967295u);
    EXPECT_EQ(mState["frameWidthID"]["value"], 4294967295.0) << "limits are for people";
}

/// Does to a dialog what no person can: runs a function on its model, then presses OK.
class ProgramPlatform : public NotingPlatform {
  public:
    explicit ProgramPlatform(void (*act)(corvane::DialogModel&)) : NotingPlatform(Script({})), mAct(act) {}
    void RunDialog(corvane::DialogModel& dialog, lumui::ui::UI_Node* parent) override {
        mAct(dialog);
        NotingPlatform::RunDialog(dialog, parent);
    }

  private:
    void (*mAct)(corvane::DialogModel&);
};

/// Gives a control a value by program, whatever its limits, and sends its change message.
template <class Model, class Value>
void Force(corvane::DialogModel& dialog, const char* id, Value value) {
    auto& control = dynamic_cast<Model&>(*dialog.Find(id));
    control.SetValue(value);
    dialog.Deliver(control);
}

// Values that only a program can bring: no choice at all, a disabled item, numbers beyond the limits.
TEST_F(PrefsTest, HandlersTakeWhatProgramsSet) {
    using corvane::DialogModel, corvane::NumberModel, corvane::PopupModel;
    const struct {
        void (*act)(DialogModel&);
        const char* difference;
    } kRows[] = {
        {[](DialogModel& dialog) {
             for (const char* const id : {"pixelFormatPopupID", "pixelAspectPopupID", "frameRatePopupID"}) {
                 Force<PopupModel>(dialog, id, -1L);
                 Force<PopupModel>(dialog, id, 48L);
             }
         },
         "[]"},
        {[](DialogModel& dialog) { Force<NumberModel>(dialog, "frameWidthID", -0.5); },
         R"([{"op":"replace","path":"/mFrameWidth","value":0}])"},
        {[](DialogModel& dialog) { Force<NumberModel>(dialog, "durationFramesTextID", -2.0); },
         R"([{"op":"replace","path":"/mVideoDuration/ticks","value":-16951334400}])"},
        // No color is chosen: the edits write nothing, the buttons ask nothing.
        {[](DialogModel& dialog) {
             Force<PopupModel>(dialog, "chooseColorPopupID", -1L);
             Force<NumberModel>(dialog, "chooseColorRedTextID0", 0.5);
             dialog.Press(*dialog.Find("chooseColorButtonID0"));
             EXPECT_EQ(corvane::GetButtonTitle(*dialog.Find("chooseColorButtonID0")), u"");
         },
         "[]"},
        // The gradient's disabled item: its edits write the field colors, its buttons ask nothing.
        {[](DialogModel& dialog) {
             Force<PopupModel>(dialog, "chooseColorPopupID", 0L);
             Force<NumberModel>(dialog, "chooseColorGreenTextID1", 0.5);
             dialog.Press(*dialog.Find("chooseColorButtonID1"));
         },
         R"([{"op":"replace","path":"/mLowerFieldColor/mGreenPart","value":0.5}])"},
    };
    const Json before = Edited(kDistinctSettings, {});
    for (const auto& row : kRows) {
        ProgramPlatform platform(row.act);
        const Outcome outcome = Edit(kDistinctSettings, platform);
        ASSERT_EQ(outcome.result, 0) << outcome.alert;
        EXPECT_EQ(Json::diff(before, outcome.Settings()), Json::parse(row.difference));
    }
}

} // namespace
