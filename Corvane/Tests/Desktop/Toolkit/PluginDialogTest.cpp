// Faults sought: settings that change although the person changed nothing, a dialog of the plug-in that looks
// one way and means another, a platform that needs a display and ends the process where there is none.
#include <algorithm>
#include <cstdlib>
#include <fstream>

#include <QComboBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Desktop/Loader/Display.h"
#include "Desktop/Toolkit/NumberField.h"
#include "Engine/Preferences.h"
#include "Tests/Desktop/DesktopFixture.h"

namespace {

using corvane::PreferencesOutcome;
using corvane::desktop::NumberField;
using testing::HasSubstr;

/// Settings of which every number is one that a widget would round.
constexpr char kSettings[] =
    R"({"mPixelFormat":1634887522,"mFrameWidth":47,"mFrameHeight":33,"mFramePAR":{"denominator":99,"numerator":100},)"
    R"("mFieldType":2,"mRenderFormat":0,"mVideoDuration":{"ticks":8475667200},"mVideoFrameRate":{"ticksperframe":8475667200},)"
    R"("mUpperFieldColor":{"mAlphaPart":0.123456789,"mRedPart":0.33333334,"mGreenPart":1e-9,"mBluePart":2.7182817}})";

/// Runs the plug-in's dialog on `settings`, and does `act` in its window.
corvane::PreferencesAnswer Edit(const std::string& settings, const std::function<void(QDialog&)>& act) {
    static const corvane::Bundle bundle(SYNTHEX_BUILD_DIR "/lib/ImporterSynthex.bundle");
    const corvane::ScopedPlatform scope(Platform());
    const corvane::FileJournal journal;
    WhenShown(act);
    return corvane::RequestPreferences(bundle, {.file = {}, .settings = settings}, journal);
}

/// What the plug-in makes of settings that nobody edits.
std::string Unedited(const std::string& settings) {
    return Edit(settings, [](QDialog& window) { window.reject(); }).settings;
}

TEST(PluginDialog, OKWithoutAnEditChangesNothing) {
    const auto answer = Edit(kSettings, [](QDialog& window) {
        auto& width = Find<NumberField>(window, "frameWidthID");
        width.setFocus();
        for (int i = 0; i < 30; ++i)
            QTest::keyClick(window.focusWidget(), Qt::Key_Tab); // through all of them
        QTest::keyClick(&width, Qt::Key_Return);
    });
    EXPECT_EQ(answer.outcome, PreferencesOutcome::kDone);
    const std::string unedited = Unedited(kSettings);
    EXPECT_THAT(unedited, HasSubstr("0.3333333"));
    EXPECT_EQ(answer.settings, unedited);
}

TEST(PluginDialog, WhatThePersonSeesIsWhatIsStored) {
    const auto answer = Edit(kSettings, [](QDialog& window) {
        auto& choose = Find<QComboBox>(window, "chooseColorPopupID");
        auto& button = Find<QPushButton>(window, "chooseColorButtonID1");
        EXPECT_EQ(button.text(), "Lower Field Color");
        QTest::keyClick(&Find<QComboBox>(window, "colorRenderingTypePopupID"), Qt::Key_Down);
        EXPECT_EQ(choose.currentText(), "Gradient Colors - Start");
        EXPECT_FALSE(choose.model()->flags(choose.model()->index(0, 0)).testFlag(Qt::ItemIsEnabled));
        QTest::keyClick(&choose, Qt::Key_Home); // the first item that a person can have
        EXPECT_EQ(choose.currentIndex(), 1);
        QTest::keyClick(&choose, Qt::Key_Down);
        EXPECT_EQ(button.text(), "Bottom Color");
        auto& red = Find<NumberField>(window, "chooseColorRedTextID1");
        red.selectAll();
        QTest::keyClicks(&red, "2.5");
        QTest::keyClick(&Find<QComboBox>(window, "fieldTypePopupID"), Qt::Key_Home);
        EXPECT_FALSE(button.isEnabled());
        Find<QPushButton>(window, "okButton").click();
    });
    auto expected = nlohmann::json::parse(Unedited(kSettings));
    expected["mRenderFormat"] = 1;
    expected["mFieldType"] = 0;
    expected["mBottomGradiantColorEnd"]["mRedPart"] = 2.5;
    EXPECT_EQ(nlohmann::json::parse(answer.settings), expected);
}

void CollectMnemonics(const std::vector<corvane::LayoutNode>& nodes, std::u16string& letters) {
    for (const auto& node : nodes) {
        if (node.label.mnemonic)
            letters += static_cast<char16_t>(node.label.text[*node.label.mnemonic] & 0x5F); // upper case
        CollectMnemonics(node.children, letters);
    }
}

TEST(PluginDialog, NoTwoControlsShareALetter) {
    std::ifstream file(SYNTHEX_BUILD_DIR
                       "/lib/ImporterSynthex.bundle/Contents/Resources/ImporterSynthexPrefs.loom");
    const std::string script(std::istreambuf_iterator<char>(file), {});
    std::u16string letters;
    CollectMnemonics(corvane::ParseLayout(script, u"ImporterSynthexPrefs").children, letters);
    EXPECT_GT(letters.size(), 10u);
    std::ranges::sort(letters);
    EXPECT_EQ(std::ranges::adjacent_find(letters), letters.end()) << Mosk::ToUTF8(letters);
}

TEST(PluginDialog, EscIsACancel) {
    const auto answer = Edit(kSettings, [](QDialog& window) {
        auto& width = Find<NumberField>(window, "frameWidthID");
        width.selectAll();
        QTest::keyClicks(&width, "99");
        QTest::keyClick(&width, Qt::Key_Escape);
    });
    EXPECT_EQ(answer.outcome, PreferencesOutcome::kCancelled);
    EXPECT_THAT(answer.settings, HasSubstr("\"mFrameWidth\":47"));
}

/// Sets the variables that say where windows go, and puts them back.
class DisplayTest : public testing::Test {
  protected:
    static constexpr const char* kNames[] = {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY",
                                             "XDG_RUNTIME_DIR"};

    DisplayTest() {
        for (const char* const name : kNames) {
            const char* const value = std::getenv(name);
            mBefore.emplace_back(value != nullptr ? std::optional<std::string>(value) : std::nullopt);
        }
    }
    ~DisplayTest() override {
        for (std::size_t i = 0; i < mBefore.size(); ++i)
            Set(kNames[i], mBefore[i] ? mBefore[i]->c_str() : nullptr);
    }
    static void Set(const char* name, const char* value) {
        if (value == nullptr)
            ::unsetenv(name);
        else
            ::setenv(name, value, 1);
    }

  private:
    std::vector<std::optional<std::string>> mBefore;
};

TEST_F(DisplayTest, TheEnvironmentSaysWhetherThereIsOne) {
    struct Row {
        const char *platform, *x11, *wayland, *runtime;
        const char* why;
    };
    const Row kRows[] = {
        {nullptr, nullptr, nullptr, nullptr, "there is no display (DISPLAY and WAYLAND_DISPLAY are not set)"},
        {"", "", "", nullptr, "there is no display (DISPLAY and WAYLAND_DISPLAY are not set)"},
        {"xcb", nullptr, nullptr, nullptr, "there is no display (DISPLAY and WAYLAND_DISPLAY are not set)"},
        {nullptr, ":987", nullptr, nullptr, "the display :987 can't be opened"},
        {nullptr, "nonsense", nullptr, nullptr, "the display nonsense can't be opened"},
        {nullptr, nullptr, "wayland-9", "/nonexistent", "the display wayland-9 can't be opened"},
        {"offscreen", nullptr, nullptr, nullptr, ""},
    };
    for (const Row& row : kRows) {
        Set("QT_QPA_PLATFORM", row.platform);
        Set("DISPLAY", row.x11);
        Set("WAYLAND_DISPLAY", row.wayland);
        Set("XDG_RUNTIME_DIR", row.runtime);
        EXPECT_EQ(corvane::WhyNoDisplay(), row.why);
    }
}

} // namespace
