// The viewer as a person uses it: through its actions, keys and pointer, and by the pixels that it paints.
#include <array>
#include <cstring>
#include <functional>
#include <set>

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QToolButton>
#include <gmock/gmock.h>

#include "Desktop/Viewer/PictureArea.h"
#include "Desktop/Viewer/PixelReadout.h"
#include "Desktop/Viewer/Viewer.h"
#include "Tests/Desktop/DesktopFixture.h"
#include "Tests/TestSettings.h"

namespace {

using corvane::Clip;
using corvane::desktop::FittedSize;
using corvane::desktop::PictureArea;
using corvane::desktop::Viewer;
using ClipPointer = std::shared_ptr<const Clip>;

constexpr std::int64_t kFrameTicks = 10160640000; // 25 frames a second
constexpr std::int64_t kFrameNanoseconds = 40000000;

/// 47 x 33, interlaced, with fields of two colors and a number; `more` overrides members.
ClipPointer MakeClip(const std::string& more = {}, std::int64_t frames = 100) {
    static const auto bundle = std::make_shared<corvane::Bundle>(corvane::testing::BundlePath());
    return Clip::OpenPrefs(
        bundle, "clip",
        R"({"mPixelFormat":1634887522,"mFrameWidth":47,"mFrameHeight":33,"mFieldType":1,"mRenderFormat":0,)"
        R"("mFramePAR":{"numerator":1,"denominator":1},)"
        R"("mUpperFieldColor":{"mAlphaPart":1,"mRedPart":0.9,"mGreenPart":0.1,"mBluePart":0.2},)"
        R"("mLowerFieldColor":{"mAlphaPart":1,"mRedPart":0.1,"mGreenPart":0.3,"mBluePart":0.8},)"
        R"("mVideoFrameRate":{"ticksperframe":10160640000},"mVideoDuration":{"ticks":)" +
            std::to_string(frames * kFrameTicks) + "}" + more + "}");
}

class ViewerTest : public testing::Test {
  protected:
    ViewerTest() {
        Platform();
        viewer = std::make_unique<Viewer>();
        area = viewer->findChild<PictureArea*>();
        shown = std::make_unique<QSignalSpy>(viewer.get(), &Viewer::FrameShown);
        viewer->resize(640, 480);
        viewer->show();
        viewer->activateWindow();
        QApplication::setActiveWindow(viewer.get());
        area->setFocus();
    }

    /// Waits until the picture of a frame is on the screen, as it is wanted now.
    void WaitFor(std::int64_t frame) {
        const auto there = [&] {
            return area->GetPicture() && area->GetPicture()->request.frame == frame &&
                   area->GetPicture()->request.look == area->GetLook() && !shown->isEmpty() &&
                   shown->last()[0].toLongLong() == frame;
        };
        ASSERT_TRUE(QTest::qWaitFor(there, 20000)) << "frame " << frame;
    }
    void Open(const ClipPointer& clip, bool keepPlace = false) {
        shown->clear();
        viewer->SetClip(clip, QStringLiteral("clip"), keepPlace);
        WaitFor(viewer->CurrentFrame());
    }
    void Trigger(const char* action) { viewer->findChild<QAction*>(QLatin1String(action))->trigger(); }
    QString Text(const char* label) { return viewer->findChild<QLabel*>(QLatin1String(label))->text(); }
    QImage Painted() { return area->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    /// Of a picture that is smaller than the area.
    QPoint Corner() {
        const QSize space = area->viewport()->size() - area->GetLook().size;
        return {space.width() / 2, space.height() / 2};
    }

    std::unique_ptr<Viewer> viewer;
    PictureArea* area = nullptr;
    std::unique_ptr<QSignalSpy> shown;
};

TEST_F(ViewerTest, KeysAndFieldsMoveThePlayheadAndNeverOutOfTheClip) {
    Open(MakeClip());
    const auto press = [&](Qt::Key key) { QTest::keyClick(area, key); };
    auto* const scrubber = viewer->findChild<QSlider*>(QStringLiteral("scrubber"));
    const auto click = [&](int x) { QTest::mouseClick(scrubber, Qt::LeftButton, {}, QPoint(x, 5)); };
    const std::pair<std::function<void()>, std::int64_t> rows[] = {
        {[&] { press(Qt::Key_Right); }, 1},          {[&] { press(Qt::Key_End); }, 99},
        {[&] { press(Qt::Key_Right); }, 99},         {[&] { press(Qt::Key_Left); }, 98},
        {[&] { press(Qt::Key_Home); }, 0},           {[&] { press(Qt::Key_Left); }, 0},
        {[&] { click(scrubber->width() - 2); }, 99}, {[&] { click(1); }, 0},
        {[&] { viewer->SetCurrentFrame(-7); }, 0},   {[&] { viewer->SetCurrentFrame(INT64_MAX); }, 99},
    };
    for (const auto& [act, frame] : rows) {
        act();
        WaitFor(frame);
        EXPECT_EQ(viewer->CurrentFrame(), frame);
    }
    auto* const field = viewer->findChild<QLineEdit*>(QStringLiteral("frameField"));
    for (const auto& [typed, frame] : {std::pair("41", 41),
                                       {"2.5s", 62},
                                       {"0:02", 50},
                                       {"00:00:00:31", 50},
                                       {"1;2", 50},
                                       {"00:00:03:10", 85},
                                       {"99999999999999999999", 99}}) {
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, QLatin1String(typed));
        QTest::keyClick(field, Qt::Key_Space); // belongs to the field
        QTest::keyClick(field, Qt::Key_Return);
        WaitFor(frame);
        EXPECT_EQ(field->text() == QString::number(frame), !field->hasFocus()) << "what is wrong stays";
    }
    auto* const loop = viewer->findChild<QAction*>(QStringLiteral("loopAction"));
    for (QToolButton* const button : viewer->findChildren<QToolButton*>()) {
        if (button->defaultAction() != loop) continue;
        button->setFocus();
        QTest::keyClick(button, Qt::Key_Space); // belongs to the button
    }
    EXPECT_TRUE(loop->isChecked());
    EXPECT_FALSE(viewer->IsPlaying());
    EXPECT_EQ(Text("time"), QStringLiteral("00:00:03.960"));
    EXPECT_EQ(Text("timecode"), QStringLiteral("00:00:03:24"));
}

TEST_F(ViewerTest, PaintsTheLinesOfTheField) {
    const ClipPointer clip = MakeClip();
    Open(clip);
    Trigger("fullSizeAction");
    const corvane::Frame frame = clip->GetFrame(0);
    const corvane::FrameView& view = frame.View();
    // Which row of the frame is seen in row y of the picture; the last one of an odd height has no partner.
    const std::pair<const char*, std::function<int(int)>> rows[] = {
        {"bothFieldsAction", [](int y) { return y; }},
        {"upperFieldAction", [](int y) { return y / 2 * 2; }},
        {"lowerFieldAction", [](int y) { return std::min(y / 2 * 2 + 1, 31); }},
    };
    for (const auto& [action, rowOf] : rows) {
        Trigger(action);
        WaitFor(0);
        const QImage painted = Painted();
        const QPoint corner = Corner();
        for (int y = 0; y < 33; ++y)
            // The plug-in leaves the last row of an odd number alone.
            for (int x = 0; x < 47 && rowOf(y) < 32; ++x) {
                QRgb pixel; // B, G, R, A in memory are a QRgb
                std::memcpy(&pixel, view.pixels + rowOf(y) * view.rowBytes + x * 4, sizeof pixel);
                ASSERT_EQ(painted.pixel(corner + QPoint(x, y)), pixel) << action << ' ' << x << ' ' << y;
            }
    }
}

TEST_F(ViewerTest, ShapeOfThePicture) {
    const struct {
        const char* par;
        QSize room, fitted, full;
    } rows[] = {
        {R"(12,"denominator":11)", {600, 600}, {600, 386}, {51, 33}}, // 51.27 : 33
        {R"(12,"denominator":11)", {600, 100}, {155, 100}, {51, 33}},
        {R"(0,"denominator":1)", {470, 1000}, {470, 330}, {47, 33}},
        {R"(1,"denominator":0)", {470, 1000}, {470, 330}, {47, 33}},
        {R"(4294967295,"denominator":1)", {100, 100}, {100, 1}, {1 << 24, 33}},
        {R"(1,"denominator":4294967295)", {100, 100}, {1, 100}, {1, 33}},
    };
    for (const auto& row : rows) {
        const ClipPointer clip = MakeClip(std::string(R"(,"mFramePAR":{"numerator":)") + row.par + "}");
        EXPECT_EQ(FittedSize(clip->Info().format, row.room), row.fitted) << row.par;
        Trigger("fullSizeAction");
        Open(clip);
        EXPECT_EQ(area->GetLook().size, row.full) << row.par;
    }
}

TEST_F(ViewerTest, AveragesWhatIsSmallerAndShowsCheckersUnderAlpha) {
    // Two rows of opaque red and clear blue in each row of the picture: half of red, none of blue.
    Open(MakeClip(
        R"(,"mFrameWidth":1200,"mFrameHeight":800,"mLowerFieldColor":{"mAlphaPart":0,"mBluePart":1},)"
        R"("mUpperFieldColor":{"mAlphaPart":1,"mRedPart":1,"mGreenPart":0,"mBluePart":0})"));
    viewer->resize(viewer->size() + QSize(600, 400) - area->viewport()->size());
    WaitFor(0);
    ASSERT_EQ(area->GetLook().size, QSize(600, 400));
    const QImage painted = Painted();
    EXPECT_EQ(painted.pixel(402, 202), qRgb(228, 100, 100));
    EXPECT_EQ(painted.pixel(410, 202), qRgb(255, 127, 127));
    EXPECT_EQ(painted.pixel(410, 210), qRgb(228, 100, 100));
}

TEST_F(ViewerTest, ReadsThePixelUnderThePointer) {
    const std::string white = R"(,"mFrameWidth":200,"mFrameHeight":100,"mLowerFieldColor":{"mAlphaPart":0.5,)"
                              R"("mRedPart":1,"mGreenPart":1,"mBluePart":1},"mPixelFormat":)";
    const std::pair<const char*, const char*> rows[] = {
        {"1634887522", "B 255 G 255 R 255 A 128   BGRA_4444_8u (bgra)   RGB 255 255 255"},
        {"1650946657", "A 128 R 255 G 255 B 255   ARGB_4444_8u (argb)   RGB 255 255 255"},
        {"2020763490", "B 255 G 255 R 255 X 255   BGRX_4444_8u (bgrx)   RGB 255 255 255"},
        {"1635349878", "V 128 U 128 Y 235 A 128   VUYA_4444_8u (vuya)   RGB 255 255 255"},
        {"1886545762", "B 128 G 128 R 128 A 128   BGRP_4444_8u (bgrp)   RGB 255 255 255"},
        {"1634879298", "B 1 G 1 R 1 A 0.5   BGRA_4444_32f (BGra)   RGB 255 255 255"},
    };
    Trigger("fullSizeAction");
    for (const auto& [format, words] : rows) {
        Open(MakeClip(white + format));
        QTest::mouseMove(area->viewport(), Corner() + QPoint(150, 90));
        QTest::mouseMove(area->viewport(), Corner() + QPoint(152, 91));
        QTest::keyClick(area, Qt::Key_Left, Qt::ControlModifier);
        EXPECT_EQ(Text("pixelReadout"), QStringLiteral("x 151  y 91   ") + QLatin1String(words));
    }
}

TEST_F(ViewerTest, KeepsTimeAndCountsWhatItLeavesOut) {
    std::int64_t now = 7;
    viewer->SetClock([&] { return now; });
    Open(MakeClip());
    QSignalSpy playing(viewer.get(), &Viewer::PlayingChanged);
    viewer->SetCurrentFrame(10);
    WaitFor(10);
    QTest::keyClick(area, Qt::Key_Space);
    // A busy machine may show a frame on the way to the one that is due, without the time to paint it.
    std::set<std::int64_t> painted;
    QObject::connect(area, &PictureArea::Painted, area,
                     [&](const auto& picture, auto) { painted.insert(picture->request.frame); });
    for (const auto& [frames, frame] :
         {std::pair(1, 11), {2, 13}, {80, 93}}) { // the clock's way, and what is due
        now += frames * kFrameNanoseconds;
        WaitFor(frame);
        EXPECT_LE(viewer->DroppedFrames(), frame - 10 - std::ssize(painted));
    }
    EXPECT_GT(viewer->DroppedFrames(), 40);
    EXPECT_EQ(Text("droppedFrames"), QStringLiteral("%1 dropped").arg(viewer->DroppedFrames()));
    now += kFrameNanoseconds / 2;
    Trigger("loopAction");
    now += 15 * kFrameNanoseconds / 2; // the frame that is due has had its half
    WaitFor(1);
    Trigger("loopAction");
    now += 200 * kFrameNanoseconds;
    ASSERT_TRUE(playing.wait(20000) || playing.size() == 2);
    EXPECT_FALSE(viewer->IsPlaying());
    EXPECT_EQ(viewer->CurrentFrame(), 99);
    QTest::keyClick(area, Qt::Key_Space); // from the end it begins again
    WaitFor(0);
}

TEST_F(ViewerTest, PlaysBackwardsAndFaster) {
    std::int64_t now = 0;
    viewer->SetClock([&] { return now; });
    Open(MakeClip());
    struct Row {
        Qt::Key key;
        std::int64_t steps, frame; // after the key the clock goes on so many steps
    };
    for (const Row& row : {Row{Qt::Key_J, 3, 96},
                           {Qt::Key_J, 4, 88},
                           {Qt::Key_L, 2, 90},
                           {Qt::Key_L, 3, 96},
                           {Qt::Key_K, 9, 96},
                           {Qt::Key_L, 1, 97},
                           {Qt::Key_J, 5, 92},
                           {Qt::Key_J, 99, 0}}) {
        QTest::keyClick(area, row.key);
        now += row.steps * kFrameNanoseconds;
        WaitFor(row.frame);
    }
    QSignalSpy playing(viewer.get(), &Viewer::PlayingChanged);
    now += kFrameNanoseconds;
    ASSERT_TRUE(!viewer->IsPlaying() || playing.wait(20000));
    // In a loop the last frame comes before the first.
    Trigger("loopAction");
    QTest::keyClick(area, Qt::Key_J);
    now += 2 * kFrameNanoseconds;
    WaitFor(98);
}

TEST_F(ViewerTest, AChangedClipKeepsThePlace) {
    std::int64_t now = 0;
    viewer->SetClock([&] { return now; });
    Open(MakeClip());
    viewer->SetCurrentFrame(60);
    viewer->Play();
    Open(MakeClip(R"(,"mFieldType":0)"), true);
    EXPECT_EQ(viewer->CurrentFrame(), 60);
    EXPECT_TRUE(viewer->IsPlaying());
    now += kFrameNanoseconds;
    WaitFor(61);
    // Unreadable for a moment, then shorter.
    viewer->SetProblem(QStringLiteral("clip"), QStringLiteral("clip: gone."));
    EXPECT_EQ(area->GetMessage(), QStringLiteral("clip: gone."));
    EXPECT_FALSE(viewer->IsPlaying());
    Open(MakeClip({}, 50), true);
    EXPECT_EQ(viewer->CurrentFrame(), 49);
    EXPECT_TRUE(viewer->IsPlaying());
    Open(MakeClip());
    EXPECT_EQ(viewer->CurrentFrame(), 0);
    EXPECT_FALSE(viewer->IsPlaying());
}

TEST_F(ViewerTest, SaysWhyThereIsNoPicture) {
    viewer->SetClip(MakeClip(R"(,"mVideoFrameRate":{"ticksperframe":0})"), QStringLiteral("clip"), false);
    EXPECT_THAT(area->GetMessage().toStdString(), testing::HasSubstr("no frame rate"));
    EXPECT_FALSE(viewer->PlaybackActions().front()->isEnabled());
    viewer->Play();
    viewer->SetCurrentFrame(3);
    EXPECT_FALSE(viewer->IsPlaying());
}

} // namespace
