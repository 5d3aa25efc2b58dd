// Faults sought: widgets that don't follow the model or let a person do what the model forbids, a window that
// closes without the dialog's cancel button, errors of a plug-in that are lost in the event loop.
#include <stdexcept>

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTest>
#include <gmock/gmock.h>

#include "Desktop/Toolkit/ElidedLabel.h"
#include "Desktop/Toolkit/NumberField.h"
#include "Tests/Desktop/DesktopFixture.h"

namespace {

using corvane::CheckboxModel;
using corvane::NumberModel;
using corvane::PopupModel;
using corvane::StaticTextModel;
using corvane::TextButtonModel;
using corvane::desktop::ElidedLabel;
using corvane::desktop::NumberField;
using testing::ElementsAre;

constexpr char kPopup[] =
    R"(<group text="G"><row><label text="_Popup" for="popup"/><popup id="popup"/></row></group>)";

/// The dialog of the tests of popups: three items, of which the second is disabled and the first is chosen.
class PopupTest : public testing::Test {
  protected:
    PopupTest() : dialog(kPopup), popup(dialog.Get<PopupModel>("popup")) {
        for (const char16_t* const text : {u"One", u"Two & more", u"Three"}) popup.AddItem(text);
        popup.DisableItem(1, true);
        popup.SetValue(0);
    }

    TestDialog dialog;
    PopupModel& popup;
};

TEST_F(PopupTest, GraysDisabledItemsOutAndPeopleGetPastThem) {
    dialog.Run([&](QDialog& window) {
        auto& box = Find<QComboBox>(window, "popup");
        EXPECT_EQ(box.itemText(1), "Two & more");
        EXPECT_FALSE(box.model()->flags(box.model()->index(1, 0)).testFlag(Qt::ItemIsEnabled));
        QTest::keyClick(&box, Qt::Key_Down);
        EXPECT_EQ(popup.GetValue(), 2);
        // Whatever way a style may offer to it, the disabled item is not taken, and the box shows the model's
        // again.
        box.setCurrentIndex(1);
        Q_EMIT box.activated(1);
        EXPECT_EQ(popup.GetValue(), 2);
        EXPECT_EQ(box.currentIndex(), 2);
    });
    EXPECT_THAT(dialog.reports, ElementsAre("popup", "cancel"));
}

TEST_F(PopupTest, TheProgramReachesDisabledItemsAndChangesThemWhileShown) {
    dialog.Run([&](QDialog& window) {
        auto& box = Find<QComboBox>(window, "popup");
        popup.SetValue(1);
        EXPECT_EQ(box.currentIndex(), 1);
        popup.SetValue(-1);
        EXPECT_EQ(box.currentIndex(), -1);
        popup.SetValue(2);
        popup.EnableAllItems();
        EXPECT_EQ(box.currentIndex(), 2); // new items keep the choice
        EXPECT_TRUE(box.model()->flags(box.model()->index(1, 0)).testFlag(Qt::ItemIsEnabled));
        popup.SetDisabled(true);
        EXPECT_FALSE(box.isEnabled());
    });
    EXPECT_THAT(dialog.reports, ElementsAre("cancel")); // no report of what the program did
}

TEST(DialogWindow, EscAndTheCloseButtonPressCancel) {
    constexpr void (*kWays[])(QDialog&) = {
        [](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); },
        [](QDialog& window) { window.close(); },
        [](QDialog& window) { QTest::keyClick(&Find<NumberField>(window, "number"), Qt::Key_Escape); },
    };
    for (const auto way : kWays) {
        TestDialog dialog(R"(<number id="number"/>)");
        dialog.Run([&](QDialog& window) {
            QTest::keyClicks(&Find<NumberField>(window, "number"), "12");
            way(window);
            EXPECT_FALSE(window.isVisible());
        });
        EXPECT_EQ(dialog.reports.back(), "cancel");
        EXPECT_TRUE(dialog.Model().IsClosed());
    }
    // Where the cancel button can't be pressed, the window closes all the same.
    TestDialog dialog("");
    dialog.Model().Find("cancel")->GetView().SetDisabled(true);
    dialog.Run([](QDialog& window) { window.close(); });
    EXPECT_THAT(dialog.reports, ElementsAre());
    EXPECT_TRUE(dialog.Model().IsClosed());
}

TEST(DialogWindow, ReturnPressesTheDefaultButtonWhereverTheFocusIs) {
    for (const char* const focus : {"plain", "number", "popup", "box"}) {
        TestDialog dialog(R"(<row><button id="plain" text="Plain"/><number id="number"/><popup id="popup"/>
            <checkbox id="box" text="Box"/></row>)");
        dialog.Run([&](QDialog& window) {
            auto& widget = Find<QWidget>(window, focus);
            widget.setFocus();
            QTest::keyClick(&widget, Qt::Key_Return);
        });
        EXPECT_THAT(dialog.reports, ElementsAre("ok")) << focus;
    }
}

TEST(DialogWindow, AReceiverThatThrowsClosesTheWindowAndIsHeard) {
    TestDialog dialog(R"(<checkbox id="box" text="_Box"/>)");
    dialog.onReport = [](const std::string&) { throw std::runtime_error("from the plug-in"); };
    dialog.Run([](QDialog& window) {
        Find<QCheckBox>(window, "box").click();
        EXPECT_FALSE(window.isVisible());
    });
    EXPECT_THROW(dialog.Model().RethrowFailure(), std::runtime_error);
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
    const auto color = [&](float r, float g, float b, float a) {
        for (const auto& [id, value] :
             {std::pair("r", r), std::pair("g", g), std::pair("b", b), std::pair("a", a)})
            dialog.Get<NumberModel>(id).SetValue(static_cast<double>(value));
    };
    color(1, 0.5f, 0, 1);
    dialog.Run([&](QDialog& window) {
        auto& button = Find<QPushButton>(window, "button");
        const auto pixel = [&](int x, int y) {
            return button.icon().pixmap(button.iconSize(), 1.0).toImage().pixelColor(x, y);
        };
        EXPECT_EQ(pixel(6, 6), QColor(255, 128, 0));
        color(-3, 7, std::numeric_limits<float>::quiet_NaN(), 1); // nothing that can't be shown does harm
        EXPECT_EQ(pixel(6, 6), QColor(0, 255, 0));
        color(0, 0, 1, 0.5f);
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
        EXPECT_TRUE(label.GetShownText().startsWith(u"/")) << label.GetShownText().toStdString();
        EXPECT_TRUE(label.GetShownText().endsWith(u"x"));
        EXPECT_TRUE(label.GetShownText().contains(QChar(0x2026)));
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
        std::vector<std::string> order;
        for (int i = 0; i < 7; ++i) {
            order.push_back(window.focusWidget()->objectName().toStdString());
            QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
        }
        EXPECT_THAT(order, ElementsAre("n1", "p", "c", "t", "n2", "cancel", "ok"));
    });
}

} // namespace
