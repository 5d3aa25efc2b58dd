// Faults sought: a finding that leads to another picture, pictures side by side that do not belong together,
// a comparison that goes on after its window is gone, a bad video without a word.
#include <fstream>

#include <sys/stat.h>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <gmock/gmock.h>

#include "Desktop/Comparison/ComparisonWindow.h"
#include "Desktop/Viewer/PictureGeometry.h"
#include "Export/Export.h"
#include "Tests/Desktop/DesktopFixture.h"
#include "Tests/Export/TestClips.h"
#include "Tests/TestFolder.h"

namespace {

using namespace corvane::desktop;
using testing::HasSubstr;

class ComparisonTest : public testing::Test {
  protected:
    ComparisonTest() {
        Platform();
        clip = corvane::testing::MakeClip({.width = 320, .height = 240, .frames = 120});
        corvane::ExportOptions options;
        options.output = folder / "whole.mkv";
        options.codec = "ffv1";
        corvane::ExportClip(*clip, options, [](auto, auto) {}, {});
    }
    ~ComparisonTest() override { delete window; }

    void Open(const std::string& video) {
        delete window;
        window = new ComparisonWindow(clip, "a clip", folder / video, nullptr);
        window->show();
    }
    void Compare(const std::string& video) {
        Open(video);
        WaitForEnd();
    }
    void WaitForEnd() { ASSERT_TRUE(QSignalSpy(window, &ComparisonWindow::Done).wait(60000)); }
    std::string Text(const char* label) { return Find<QLabel>(*window, label).text().toStdString(); }
    template <class Widget>
    Widget& Get() {
        return *window->findChild<Widget*>();
    }
    /// The pictures in one of the views, from the left, when they are those of `place`.
    QImage Picture(int view, int number, int frame) {
        EXPECT_EQ(Text("comparePlace"), fmt::format("Picture {}, frame {}", number, frame));
        auto& pictures = Get<ComparedPictures>();
        const QString shown = QStringLiteral("Picture %1").arg(number);
        EXPECT_TRUE(QTest::qWaitFor([&] { return pictures.accessibleDescription() == shown; }, 30000));
        window->findChildren<QToolButton*>()[view]->click();
        return pictures.grab().toImage();
    }
    /// Shows expected and found pictures, which are alike.
    void ExpectPlace(int number, int frame) {
        const QImage difference = Picture(2, number, frame);
        QRect place({}, FittedSize(clip->Info().format, difference.size()));
        place.moveCenter(difference.rect().center());
        int brightest = 0;
        for (int x = place.left(); x <= place.right(); ++x)
            for (int y = place.top(); y < place.center().y(); ++y) // below is what tells the view
                brightest = std::max(brightest, qGray(difference.pixel(x, y)));
        EXPECT_LT(brightest, 32) << number;
    }

    corvane::testing::TestFolder folder;
    std::shared_ptr<const corvane::Clip> clip;
    QPointer<ComparisonWindow> window;
};

TEST_F(ComparisonTest, FindingsAndKeysLeadToPicturesAndTheirFrames) {
    corvane::testing::OutputOf(
        fmt::format("cd '{}' && ffmpeg -v error -i whole.mkv -vf \"select='not(between(n,8,10))'\" "
                    "-vsync passthrough -c:v ffv1 gap.mkv 2>&1",
                    folder.Path().string()));
    Compare("gap.mkv");
    auto& findings = Find<QListWidget>(*window, "compareFindings");
    ASSERT_EQ(findings.count(), 1);
    EXPECT_EQ(findings.item(0)->text(), "Frames 8 to 10 are missing.\nframes.missing");
    EXPECT_THAT(Text("compareSummary"), HasSubstr("117 of 117 pictures show a frame of the clip. PSNR: "));
    ExpectPlace(8, 11);
    auto& timeline = Get<ComparisonTimeline>();
    const QImage marks = timeline.grab().toImage();
    const auto above = [&](int number) { return marks.pixel(marks.width() * (2 * number + 1) / 234, 4); };
    EXPECT_NE(above(8), above(5)); // the one after the gap, and no other
    EXPECT_EQ(above(10), above(5));
    const std::tuple<Qt::Key, int, int> keys[] = {{Qt::Key_End, 116, 119},    {Qt::Key_PageUp, 106, 109},
                                                  {Qt::Key_Home, 0, 0},       {Qt::Key_Left, 0, 0},
                                                  {Qt::Key_PageDown, 10, 13}, {Qt::Key_Right, 11, 14}};
    for (const auto& [key, number, frame] : keys) {
        QTest::keyClick(&timeline, key);
        ExpectPlace(number, frame);
    }
    QTest::mouseClick(&timeline, Qt::LeftButton, {}, {timeline.width() * 121 / 234, 20}); // of 60 the middle
    ExpectPlace(60, 63);
    const QImage both = Picture(0, 60, 63), wiped = Picture(1, 60, 63);
    QTest::keyClick(&Get<ComparedPictures>(), Qt::Key_Left);
    EXPECT_NE(both, wiped);
    EXPECT_NE(wiped, Picture(1, 60, 63));

    WhenShown([&](QDialog& dialog) {
        auto& name = Find<QLineEdit>(dialog, "fileNameEdit");
        EXPECT_EQ(name.text(), "gap.html");
        QTest::keyClick(&name, Qt::Key_Return);
    });
    Find<QPushButton>(*window, "compareSave").click();
    EXPECT_THAT(Text("compareSummary"), HasSubstr("gap.html: saved."));
    EXPECT_THAT(corvane::testing::ReadFile(folder / "gap.html"), HasSubstr("Frames 8 to 10 are missing."));
}

TEST_F(ComparisonTest, BadVideosSayWhy) {
    folder.Write("text", "no video");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const auto& [name, why] :
         {std::pair("none", "there is no such file"), {"text", "no video"}, {"pipe", "pipe"}}) {
        Compare(name);
        EXPECT_THAT(Text("compareSummary"), HasSubstr(folder / name));
        EXPECT_THAT(Text("compareSummary"), HasSubstr(why));
        EXPECT_FALSE(Find<QPushButton>(*window, "compareSave").isEnabled());
    }
}

TEST_F(ComparisonTest, EndsWhenStoppedAndWithItsWindow) {
    std::string list = "ffconcat version 1.0\n";
    for (int i = 0; i < 10000; ++i) list += "file whole.mkv\n";
    folder.Write("long.ffconcat", list);
    const auto runs = [this] { return Text("compareSummary").starts_with("Comparing: picture"); };
    Open("long.ffconcat");
    ASSERT_TRUE(QTest::qWaitFor(runs, 60000));
    Find<QPushButton>(*window, "compareStop").click();
    WaitForEnd();
    EXPECT_THAT(Text("compareSummary"), HasSubstr("the rest was not compared"));
    Open("long.ffconcat");
    ASSERT_TRUE(QTest::qWaitFor(runs, 60000));
    window->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }, 60000));
}

} // namespace
