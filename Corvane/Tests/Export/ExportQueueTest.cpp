// Faults sought: jobs that run at once or out of order, one failed job that holds up the others, files left
// by what was cancelled, failures without their reason, a queue that hangs when it goes.
#include "Export/ExportQueue.h"

#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestClips.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

using namespace corvane;
using enum ExportState;
using corvane::testing::LoadBundle;
using corvane::testing::Settings;
using corvane::testing::TestFolder;
using ::testing::ElementsAre;
using Step = std::pair<ExportQueue::ID, ExportState>;

ExportJob Job(const std::filesystem::path& output, int frames = 5) {
    ExportJob job{"clip", {{}, TextOf(Settings{.width = 64, .height = 48, .frames = frames})}, {}};
    job.options.output = output;
    return job;
}

/// The changes of state, in their order.
struct Steps : std::vector<Step> {
    void Note(ExportQueue::ID id, const ExportStatus& status) {
        if (empty() || back() != Step(id, status.state)) emplace_back(id, status.state);
    }
};

TEST(ExportQueue, RunsOneJobAfterTheOtherWhateverBecomesOfThem) {
    const TestFolder folder;
    Steps steps;
    std::promise<ExportStatus> last;
    ExportQueue queue(LoadBundle(), [&](ExportQueue::ID id, const ExportStatus& status) {
        steps.Note(id, status);
        if (id == 3 && status.IsFinished()) last.set_value(status);
    });
    queue.Add(Job(folder / "a.mkv"));
    ExportJob gone = Job(folder / "b.y4m");
    gone.source = {folder / "gone.synthex", ""};
    queue.Add(gone);
    queue.Add(Job(folder / "%d.png"));
    const ExportStatus done = last.get_future().get();
    EXPECT_EQ(std::tie(done.report.frames, done.framesDone, done.framesTotal), std::tuple(5, 5, 5));
    EXPECT_GT(done.report.bytes, 0u);
    EXPECT_THAT(queue.Status(2)->failure, ::testing::StartsWith((folder / "gone.synthex").string()));
    EXPECT_THAT(steps, ElementsAre(Step(1, kRunning), Step(1, kDone), Step(2, kRunning), Step(2, kFailed),
                                   Step(3, kRunning), Step(3, kDone)));
    EXPECT_THAT(folder.Names(), ElementsAre("0.png", "1.png", "2.png", "3.png", "4.png", "a.mkv"));
}

TEST(ExportQueue, CancelledJobsLeaveNothingAndTheOthersGoOn) {
    const TestFolder folder;
    Steps steps;
    std::promise<void> added, thirdRuns;
    {
        ExportQueue queue(LoadBundle(), [&](ExportQueue::ID id, const ExportStatus& status) {
            steps.Note(id, status);
            if (status.framesDone != 1 || status.state != kRunning) return;
            if (id == 3) return thirdRuns.set_value();
            added.get_future().wait();
            EXPECT_TRUE(queue.IsTaken(folder.Path() / "." / "b.y4m"));
            queue.Cancel(2);
            EXPECT_FALSE(queue.IsTaken(folder / "b.y4m"));
            queue.Cancel(1);
            queue.Forget(1); // too early: nothing happens
        });
        for (const char* const name : {"a.mp4", "b.y4m", "c.y4m"}) queue.Add(Job(folder / name, 1000000));
        added.set_value();
        thirdRuns.get_future().wait();
        EXPECT_EQ(queue.Status(1)->state, kCancelled);
        EXPECT_EQ(queue.CountUnfinished(), 1u);
        queue.Forget(1);
        EXPECT_FALSE(queue.Status(1));
    } // ends the third
    EXPECT_THAT(steps, ElementsAre(Step(1, kRunning), Step(2, kCancelled), Step(1, kCancelled),
                                   Step(3, kRunning), Step(3, kCancelled)));
    EXPECT_TRUE(folder.Names().empty());
}

} // namespace
