// Faults sought: a finding that leads to another picture, a comparison that goes on after its window is gone,
// a picture that differs from what the video shows there, a bad video without a word.
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include "Desktop/Comparison/ComparisonTimeline.h"
#include "Desktop/Comparison/ComparisonWindow.h"
#include "Export/Export.h"
#include "Tests/Desktop/DesktopFixture.h"
#include "Tests/Export/TestClips.h"

namespace {

using namespace corvane::desktop;
using corvane::testing::Settings;

class ComparisonTest : public testing::Test {
  protected:
    ComparisonTest() { Platform(); }

    /// Exports `settings`, and compares the clip with it.
    ComparisonWindow& Compare(const Settings& settings, corvane::FrameRange frames) {
        clip = corvane::testing::OpenClip(settings);
        corvane::ExportOptions options;
        options.output = folder / "video.mkv";
        options.codec = "ffv1";
        options.first = frames.first;
        options.last = frames.last;
        corvane::ExportClip(*clip, options, {}, cancel);
        return Open(options.output);
    }
    ComparisonWindow& Open(const std::filesystem::path& video) {
        window = new ComparisonWindow(clip, "a clip", video, nullptr);
        window->show();
        return *window;
    }
    void WaitUntilDone() {
        QSignalSpy done(window, &ComparisonWindow::Done);
        ASSERT_TRUE(done.wait(60000));
    }

    corvane::testing::TestFolder folder;
    std::shared_ptr<const corvane::Clip> clip;
    std::atomic<bool> cancel{false};
    QPointer<ComparisonWindow> window;
};
