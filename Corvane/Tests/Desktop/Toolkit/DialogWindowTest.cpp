// Faults sought: widgets that don't follow the model or let a person do what the model forbids, a window that
// closes without the dialog's cancel button, settings that change although the person changed nothing, a
// picker that rounds a color, loses an extension or answers the opposite, a platform that needs a display.
#include <fstream>

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <gmock/gmock.h>

#include "Desktop/Loader/Display.h"
#include "Desktop/Toolkit/ElidedLabel.h"
#include "Desktop/Toolkit/NumberField.h"
#include "Engine/Preferences.h"
#include "Tests/Desktop/DesktopFixture.h"
#include "Tests/TestSettings.h"

namespace {

using corvane::CheckboxModel;
using corvane::NumberModel;
using corvane::PopupModel;
using corvane::PreferencesOutcome;
using corvane::StaticTextModel;
using corvane::TextButtonModel;
using corvane::desktop::ElidedLabel;
using corvane::desktop::NumberField;
using lumui::dialogs::UI_MessageBox;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(DialogWindow, APopupFollowsItsModelAndKeepsPeopleFromDisabledItems) {
    TestDialog dialog(R"(<row><label text="_Popup" for="popup"/><popup id="popup"/></row>)");
    auto& popup = dialog.Get<PopupModel>("popup");
    for (const char16_t* const text : {u"One", u"Two & more", u"Three"}) popup.AddItem(text);
    popup.DisableItem(1, true);
    popup.SetValue(0);
    dialog.Run([&](QDialog& window) {
        auto& box = Find<QComboBox>(window, "popup");
        const auto grayed = [&] {
            return !(box.model()->flags(box.model()->index(1, 0)) & Qt::ItemIsEnabled);
        };
        EXPECT_EQ(box.itemText(1), "Two & more");
        EXPECT_TRUE(grayed());
        QTest::keyClick(&box, Qt::Key_Down);
        EXPECT_EQ(popup.GetValue(), 2);
        // Whatever way a style may offer to it, the disabled item is not taken, and the box shows the model's
        // again.
        box.setCurrentIndex(1);
        Q_EMIT box.activated(1);
        EXPECT_EQ(popup.GetValue(), 2);
        EXPECT_EQ(box.currentIndex(), 2);
        Q_EMIT box.activated(2);             // chosen although it is shown
        for (const int value : {1, -1, 2}) { // the program may choose it
            popup.SetValue(value);
            EXPECT_EQ(box.currentIndex(), value);
        }
        popup.EnableAllItems();
        EXPECT_EQ(box.currentIndex(), 2); // new items keep the choice
        EXPECT_FALSE(grayed());
        popup.SetDisabled(true);
        EXPECT_FALSE(box.isEnabled());
    });
    EXPECT_THAT(dialog.reports, ElementsAre("popup", "popup", "cancel")); // no report of what the program did
}

TEST(DialogWindow, EscAndTheCloseButtonPressCancelAndReturnTheDefaultButton) {
    const struct {
        const char *focus, *button;
        std::function<void(QDialog&)> act;
    } kRows[] = {
        {"number", "cancel", [](QDialog& window) { window.close(); }},
        {"number", "cancel", [](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); }},
        {"number", "cancel", [](QDialog& window) { QTest::keyClick(window.focusWidget(), Qt::Key_Escape); }},
        {"number", "ok", {}},
        {"plain", "ok", {}},
        {"popup", "ok", {}},
        {"box", "ok", {}},
    };
    for (const auto& row : kRows) {
        TestDialog dialog(R"(<row><button id="plain" text="Plain"/><number id="number"/><popup id="popup"/>
            <checkbox id="box" text="Box"/></row>)");
        dialog.Run([&](QDialog& window) {
            auto& widget = Find<QWidget>(window, row.focus);
            widget.setFocus();
            if (row.act) {
                QTest::keyClicks(&widget, "12");
                row.act(window);
            } else
                QTest::keyClick(&widget, Qt::Key_Return);
            EXPECT_FALSE(window.isVisible());
        });
        EXPECT_THAT(dialog.reports, ElementsAre(row.button)) << row.focus;
    }
}

TEST(DialogWindow, ACheckBoxFollowsAProgramThatTakesThePersonsCheckBack) {
    TestDialog dialog(R"(<checkbox id="box" text="A_&amp;B"/>)");
    auto& model = dialog.Get<CheckboxModel>("box");
    dialog.onReport = [&](const std::string& id) {
        if (id == "box") model.SetChecked(false);
    };
    dialog.Run([&](QDialog& window) {
        auto& box = Find<QCheckBox>(window, "box");
        box.click();
        EXPECT_FALSE(box.isChecked());
        EXPECT_EQ(box.text(), "A&&&B"); // the marked letter is an ampersand itself
    });
    EXPECT_THAT(dialog.reports, ElementsAre("box", "cancel"));
}

TEST(DialogWindow, AColorButtonShowsItsColorAndItsTitle) {
    TestDialog dialog(R"(<row><textbutton id="button" swatch="r,g,b,a"/>
        <number id="r"/><number id="g"/><number id="b"/><number id="a"/></row>)");
    const auto color = [&](double r, double g, double b, double a) {
        for (const auto& [id, value] : {std::pair("r", r), {"g", g}, {"b", b}, {"a", a}})
            dialog.Get<NumberModel>(id).SetValue(value);
    };
    color(1, 0.5, 0, 1);
    dialog.Run([&](QDialog& window) {
        auto& button = Find<QPushButton>(window, "button");
        const auto pixel = [&](int x, int y) {
            return button.icon().pixmap(button.iconSize(), 1.0).toImage().pixelColor(x, y);
        };
        EXPECT_EQ(pixel(6, 6), QColor(255, 128, 0));
        color(-3, 7, std::numeric_limits<double>::quiet_NaN(), 1); // nothing that can't be shown does harm
        EXPECT_EQ(pixel(6, 6), QColor(0, 255, 0));
        color(0, 0, 1, 0.5);
        EXPECT_NE(pixel(5, 5), pixel(9, 5)); // the squares below a clear color
        dialog.Get<TextButtonModel>("button").SetText(u"Top & Bottom_");
        EXPECT_EQ(button.text(), "Top && Bottom_");
    });
}

TEST(DialogWindow, ALongPathIsShortenedInTheMiddleAndWholeInATip) {
    TestDialog dialog(R"(<row><button id="save" text="Save"/><statictext id="path" text="-"/></row>)");
    auto& model = dialog.Get<StaticTextModel>("path");
    dialog.Run([&](QDialog& window) {
        auto& label = Find<ElidedLabel>(window, "path");
        const QSize before = window.size();
        const std::u16string path = u"/home/somebody/" + std::u16string(400, u'x') + u"/clip.synthex";
        model.SetValue(path);
        model.SetTruncation(lumui::controls::TextTruncation::kMiddle);
        Settle();
        EXPECT_EQ(window.size(), before);
        EXPECT_THAT(label.GetShownText().toStdString(), testing::MatchesRegex("/.*\xE2\x80\xA6.*x"));
        EXPECT_EQ(label.toolTip().toStdU16String(), path);
        model.SetValue(u"-");
        EXPECT_EQ(label.toolTip(), "");
    });
}

TEST(DialogWindow, TabGoesInTheOrderOfTheScript) {
    TestDialog dialog(R"(<group text="A"><row><number id="n1"/><popup id="p"/></row></group>
        <group text="B"><row><checkbox id="c" text="C"/></row>
        <row><textbutton id="t"/><number id="n2"/></row></group>)");
    dialog.Run([](QDialog& window) {
        window.activateWindow();
        Find<NumberField>(window, "n1").setFocus();
        for (const char* const id : {"n1", "p", "c", "t", "n2", "cancel", "ok"}) {
            EXPECT_EQ(window.focusWidget()->objectName(), id);
            QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
        }
    });
}

TEST(ColorPicker, KeepsExactlyWhatThePersonDidNotChange) {
    constexpr lumui::controls::ColorRGBA kOdd{0.123456789f, 2.5f, -0.25f, 0.333333f};
    WhenShown([](QDialog& window) {
        auto& picker = dynamic_cast<QColorDialog&>(window);
        EXPECT_TRUE(picker.testOption(QColorDialog::ShowAlphaChannel));
        QColor color = picker.currentColor();
        EXPECT_EQ(color.alpha(), 85);
        color.setGreen(51);
        picker.setCurrentColor(color);
        picker.accept();
    });
    const auto color = Platform().RunColorPicker({nullptr, kOdd});
    ASSERT_TRUE(color);
    EXPECT_THAT((std::array{color->mRed, color->mBlue, color->mAlpha}),
                ElementsAre(kOdd.mRed, kOdd.mBlue, kOdd.mAlpha));
    EXPECT_NEAR(color->mGreen, 0.2, 1e-5);
    WhenShown([](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); });
    EXPECT_FALSE(Platform().RunColorPicker({nullptr, kOdd}));
}

TEST(MessageBox, AnswersWithTheButtonThatWasPressed) {
    const std::pair<void (*)(QMessageBox&), std::int32_t> kRows[] = {
        {[](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); }, 16},
        {[](QMessageBox& box) { box.button(QMessageBox::No)->click(); }, 64},
        {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }, 16}, // the default
        {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }, 64},
        {[](QMessageBox& box) { box.close(); }, 64},
    };
    for (const auto& [press, answer] : kRows) {
        WhenShown([press = press](QDialog& window) {
            auto& box = dynamic_cast<QMessageBox&>(window);
            EXPECT_EQ(box.text(), "Again? <b>");
            press(box);
        });
        EXPECT_EQ(Platform().RunMessageBox({nullptr, u"Title", u"Again? <b>", 80, UI_MessageBox::kButton_Yes,
                                            UI_MessageBox::kIcon_Warning}),
                  answer);
    }
}

TEST(SaveDialog, AddsTheExtensionAndAsksBeforeAFileIsReplaced) {
    QTemporaryDir folder;
    std::ofstream(folder.filePath("old.synthex").toStdString()) << "{}";
    Platform();
    corvane::desktop::QtPlatform platform({.folder = folder.path().toStdString(), .remedy = {}});
    const struct {
        const char* typed; ///< null: the name that is offered
        std::optional<QMessageBox::StandardButton> asked;
        const char* path; ///< null: cancelled
    } kRows[] = {
        {nullptr, {}, "/Default Frame.synthex"},
        {"clip.v2", {}, "/clip.v2"},
        {"Schön \xE2\x82\xAC", {}, "/Schön \xE2\x82\xAC.synthex"},
        {"old", QMessageBox::Yes, "/old.synthex"},
        {"old", QMessageBox::No, nullptr},
        {"old.synthex", QMessageBox::Yes, "/old.synthex"},
        {"old.synthex", QMessageBox::No, nullptr},
    };
    for (const auto& row : kRows) {
        bool asked = false;
        WhenShown([&](QDialog& window) {
            if (row.asked)
                WhenShown([&](QDialog& question) {
                    asked = true;
                    dynamic_cast<QMessageBox&>(question).button(*row.asked)->click();
                });
            auto& edit = Find<QLineEdit>(window, "fileNameEdit");
            if (row.typed) edit.setText(QString::fromUtf8(row.typed));
            QTest::keyClick(&edit, Qt::Key_Return);
        });
        const auto path = platform.RunSaveFileDialog({.parent = nullptr,
                                                      .filters = {{u"Synthex Data", u"synthex", u"synthex"}},
                                                      .filterIndex = 0,
                                                      .defaultName = u"Default Frame",
                                                      .confirmReplace = true});
        EXPECT_EQ(path ? Mosk::ToUTF8(*path) : "", row.path ? folder.path().toStdString() + row.path : "");
        EXPECT_EQ(asked, row.asked.has_value()) << row.typed;
    }
}

/// Settings of which every number is one that a widget would round.
constexpr char kSettings[] =
    R"({"mPixelFormat":1634887522,"mFrameWidth":47,"mFrameHeight":33,"mFramePAR":{"denominator":99,"numerator":100},)"
    R"("mFieldType":2,"mRenderFormat":0,"mVideoDuration":{"ticks":8475667200},"mVideoFrameRate":{"ticksperframe":8475667200},)"
    R"("mUpperFieldColor":{"mAlphaPart":0.123456789,"mRedPart":0.33333334,"mGreenPart":1e-9,"mBluePart":2.7182817}})";

/// Runs the plug-in's dialog on `kSettings`, and does `act` in its window.
corvane::PreferencesAnswer Edit(const std::function<void(QDialog&)>& act) {
    static const corvane::Bundle bundle(corvane::testing::BundlePath());
    const corvane::ScopedPlatform scope(Platform());
    const corvane::FileJournal journal;
    WhenShown(act);
    return corvane::RequestPreferences(bundle, {.file = {}, .settings = kSettings}, journal);
}

TEST(PluginDialog, OKWithoutAnEditChangesNothing) {
    const auto answer = Edit([](QDialog& window) {
        auto& width = Find<NumberField>(window, "frameWidthID");
        width.setFocus();
        for (int i = 0; i < 30; ++i)
            QTest::keyClick(window.focusWidget(), Qt::Key_Tab); // through all of them
        QTest::keyClick(&width, Qt::Key_Return);
    });
    EXPECT_EQ(answer.outcome, PreferencesOutcome::kDone);
    EXPECT_THAT(answer.settings, HasSubstr("0.3333333"));
    EXPECT_EQ(answer.settings, Edit([](QDialog& window) { window.reject(); }).settings);
}

TEST(Display, TheEnvironmentSaysWhetherThereIsOne) {
    constexpr const char* kNames[] = {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR"};
    const auto set = [&](int name, const QByteArray& value) {
        value.isNull() ? qunsetenv(kNames[name]) : qputenv(kNames[name], value);
    };
    QByteArray before[4];
    for (int i = 0; i < 4; ++i) before[i] = qgetenv(kNames[i]);
    constexpr char kNone[] = "there is no display (DISPLAY and WAYLAND_DISPLAY are not set)";
    const struct {
        const char *values[4], *why; ///< of the variables, in the order of their names
    } kRows[] = {
        {{nullptr, nullptr, nullptr, nullptr}, kNone},
        {{"", "", "", nullptr}, kNone},
        {{"xcb", nullptr, nullptr, nullptr}, kNone},
        {{nullptr, ":987", nullptr, nullptr}, "the display :987 can't be opened"},
        {{nullptr, "nonsense", nullptr, nullptr}, "the display nonsense can't be opened"},
        {{nullptr, nullptr, "wayland-9", "/nonexistent"}, "the display wayland-9 can't be opened"},
        {{"offscreen", nullptr, nullptr, nullptr}, ""},
    };
    for (const auto& row : kRows) {
        for (int i = 0; i < 4; ++i) set(i, row.values[i]);
        EXPECT_EQ(corvane::WhyNoDisplay(), row.why);
    }
    for (int i = 0; i < 4; ++i) set(i, before[i]);
}

} // namespace
