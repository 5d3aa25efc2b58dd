// Faults sought: a number that a widget rounds although nobody edited it, an entry that is lost because the
// field was not left.
#include <cmath>
#include <functional>
#include <limits>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

#include "Desktop/Toolkit/NumberField.h"
#include "Tests/Desktop/DesktopFixture.h"

namespace {

using corvane::NumberModel;
using corvane::desktop::NumberField;
using testing::ElementsAre;

constexpr char kTwoNumbers[] = R"(<row><label text="_First" for="first"/>
    <number id="first" unit="px" min="1" max="32768" decimals="0"/>
    <number id="second" step="0.05" decimals="4"/></row>)";

void Type(NumberField& field, const char* text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QString::fromLatin1(text));
}

TEST(NumberField, KeepsTheExactNumberUntilAPersonEditsIt) {
    using Limits = std::numeric_limits<double>;
    for (const double number : {1.0 / 3, 0.1 + 0.2, -1e-7, 12345678.87654321, 9007199254740993.0, 1e300,
                                -1e-310, Limits::max(), Limits::denorm_min(), std::nextafter(1.0, 2.0)}) {
        TestDialog dialog(kTwoNumbers);
        auto& model = dialog.Get<NumberModel>("second");
        model.SetValue(number);
        dialog.Run([&](QDialog& window) {
            auto& field = Find<NumberField>(window, "second");
            field.setFocus();
            const QString shown = field.text();
            Type(field, shown.toLatin1().constData()); // the same text again is no edit
            field.interpretText();
            field.clearFocus();
            QTest::keyClick(&Find<NumberField>(window, "first"), Qt::Key_Return);
        });
        EXPECT_EQ(model.GetValue(), number);
        EXPECT_THAT(dialog.reports, ElementsAre("ok")) << number;
    }
}

TEST(NumberField, TakesAnEntryHoweverThePersonGoesOn) {
    const std::pair<const char*, std::function<void(NumberField&, QPushButton&)>> kRows[] = {
        {"Return", [](NumberField& field, QPushButton&) { QTest::keyClick(&field, Qt::Key_Return); }},
        {"a click on OK", [](NumberField&, QPushButton& ok) { QTest::mouseClick(&ok, Qt::LeftButton); }},
        {"OK without its getting the focus",
         [](NumberField&, QPushButton& ok) { ok.click(); }}, // as with Alt+O
        {"Tab, then OK",
         [](NumberField& field, QPushButton& ok) {
             QTest::keyClick(&field, Qt::Key_Tab);
             ok.click();
         }},
    };
    for (const auto& [how, goOn] : kRows) {
        TestDialog dialog(kTwoNumbers);
        dialog.Run([&, &how = how, &goOn = goOn](QDialog& window) {
            auto& field = Find<NumberField>(window, "second");
            Type(field, "0.123456");
            EXPECT_THAT(dialog.reports, ElementsAre()) << how;
            goOn(field, Find<QPushButton>(window, "ok"));
        });
        EXPECT_EQ(dialog.Get<NumberModel>("second").GetValue(), 0.123456) << how;
        EXPECT_THAT(dialog.reports, ElementsAre("second", "ok")) << how;
    }
}

TEST(NumberField, HoldsEntriesToTheLimitsAndShowsWhatItTook) {
    constexpr struct {
        const char* typed;
        double taken;
        const char* shown;
    } kRows[] = {
        {"640", 640, "640 px"},   {"99999", 32768, "32768 px"}, {"-5", 1, "1 px"},
        {"1e3", 1000, "1000 px"}, {"719.9", 7, "7 px"},         {"1,5", 7, "7 px"},
        {"1e-1", 7, "7 px"},      {"x6y4z", 64, "64 px"},       {"-", 7, "7 px"},
        {"1e", 7, "7 px"},        {"1e999", 7, "7 px"},
    };
    for (const auto& row : kRows) {
        TestDialog dialog(kTwoNumbers);
        auto& model = dialog.Get<NumberModel>("first");
        model.SetValue(7);
        dialog.Run([&](QDialog& window) {
            auto& field = Find<NumberField>(window, "first");
            Type(field, row.typed);
            field.interpretText();
            EXPECT_EQ(field.text().toStdString(), row.shown) << row.typed;
        });
        EXPECT_EQ(model.GetValue(), row.taken) << row.typed;
    }
}

TEST(NumberField, StepsLandOnNumbersThatPeopleWouldType) {
    TestDialog dialog(kTwoNumbers);
    auto& model = dialog.Get<NumberModel>("second");
    model.SetValue(0.25);
    dialog.Get<NumberModel>("first").SetValue(32767.5);
    dialog.Run([&](QDialog& window) {
        auto& field = Find<NumberField>(window, "second");
        field.setFocus();
        for (const double expected : {0.3, 0.35, 0.4}) {
            QTest::keyClick(&field, Qt::Key_Up);
            EXPECT_EQ(model.GetValue(), expected);
        }
        auto& limited = Find<NumberField>(window, "first");
        QTest::keyClick(&limited, Qt::Key_Up);
        EXPECT_EQ(dialog.Get<NumberModel>("first").GetValue(), 32768);
    });
}

} // namespace
