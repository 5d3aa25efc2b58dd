// Faults sought: jobs that run at once or out of order, one failed job that holds up the others, files left
// by what was cancelled, failures without their reason, a queue that hangs when it goes.
#include "Export/ExportQueue.h"

#include <future>
#include <map>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestClips.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

namespace fs = std::filesystem;
using corvane::ExportJob;
using corvane::ExportQueue;
using corvane::ExportState;
using corvane::ExportStatus;
using corvane::testing::Settings;
using corvane::testing::TestFolder;
using enum ExportState;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Step = std::pair<ExportQueue::ID, ExportState>;

ExportJob Job(const fs::path& output, const Settings& settings = {.width = 64, .height = 48}) {
    ExportJob job{"clip", {{}, corvane::testing::TextOf(settings)}, {}};
    job.options.output = output;
    return job;
}

/// Notes the changes of state.
class Notes {
  public:
    ExportQueue::Listener Listener() {
        return [this](ExportQueue::ID id, const ExportStatus& status) {
            if (status.framesDone > 0 && status.state == kRunning && onProgress) onProgress(id);
            const std::lock_guard lock(mMutex);
            if (mLast.contains(id) && mLast[id].state == status.state) return;
            mSteps.emplace_back(id, status.state);
            mLast[id] = status;
            mChanged.notify_all();
        };
    }
    ExportStatus WaitFor(ExportQueue::ID id) {
        std::unique_lock lock(mMutex);
        mChanged.wait(lock, [&] { return mLast.contains(id) && mLast[id].IsFinished(); });
        return mLast[id];
    }
    const std::vector<Step>& Steps() const { return mSteps; }

    std::function<void(ExportQueue::ID)> onProgress;

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Step> mSteps;
    std::map<ExportQueue::ID, ExportStatus> mLast;
};

TEST(ExportQueue, RunsOneJobAfterTheOtherWhateverBecomesOfThem) {
    const TestFolder folder;
    Notes notes;
    ExportQueue queue(corvane::testing::LoadBundle(), notes.Listener());
    const auto first = queue.Add(Job(folder / "a.mkv"));
    const auto odd = queue.Add(Job(folder / "b.mp4", {.width = 47, .height = 33}));
    ExportJob gone = Job(folder / "c.y4m");
    gone.source = {folder / "gone.synthex", ""};
    const auto missing = queue.Add(gone);
    const auto last = queue.Add(Job(folder / "%d.png"));
    const ExportStatus done = notes.WaitFor(last);
    EXPECT_EQ(std::tie(done.report.frames, done.framesDone, done.framesTotal), std::tuple(5, 5, 5));
    EXPECT_GT(done.report.bytes, 0u);
    EXPECT_THAT(notes.WaitFor(odd).failure,
                AllOf(StartsWith((folder / "b.mp4").string()), HasSubstr("multiple")));
    EXPECT_THAT(notes.WaitFor(missing).failure, StartsWith((folder / "gone.synthex").string()));
    EXPECT_THAT(notes.Steps(), ElementsAre(Step(first, kRunning), Step(first, kDone), Step(odd, kRunning),
                                           Step(odd, kFailed), Step(missing, kRunning),
                                           Step(missing, kFailed), Step(last, kRunning), Step(last, kDone)));
    EXPECT_THAT(folder.Names(), ElementsAre("0.png", "1.png", "2.png", "3.png", "4.png", "a.mkv"));
}

TEST(ExportQueue, CancelledJobsLeaveNothingAndTheOthersGoOn) {
    const TestFolder folder;
    Notes notes;
    std::promise<void> added, thirdRuns;
    bool thirdRan = false;
    {
        ExportQueue queue(corvane::testing::LoadBundle(), notes.Listener());
        notes.onProgress = [&](ExportQueue::ID id) {
            if (id == 3) {
                if (!std::exchange(thirdRan, true)) thirdRuns.set_value();
                return;
            }
            if (queue.Status(2)->IsFinished()) return;
            added.get_future().wait();
            EXPECT_TRUE(queue.IsTaken(folder.Path() / "." / "b.y4m"));
            queue.Cancel(2);
            EXPECT_FALSE(queue.IsTaken(folder / "b.y4m"));
            queue.Cancel(1);
            queue.Forget(1); // too early: nothing happens
        };
        for (const char* const name : {"a.mp4", "b.y4m", "c.y4m"})
            queue.Add(Job(folder / name, {.width = 64, .height = 48, .frames = 1000000}));
        added.set_value();
        thirdRuns.get_future().wait();
        EXPECT_EQ(queue.Status(1)->state, kCancelled);
        EXPECT_EQ(queue.CountUnfinished(), 1u);
        queue.Forget(1);
        EXPECT_FALSE(queue.Status(1));
    } // ends the third
    EXPECT_THAT(notes.Steps(), ElementsAre(Step(1, kRunning), Step(2, kCancelled), Step(1, kCancelled),
                                           Step(3, kRunning), Step(3, kCancelled)));
    EXPECT_TRUE(folder.Names().empty());
}

} // namespace
