// Faults sought: jobs that run at once or out of order, one failed job that holds up the others, files left
// by what was cancelled, failures without their reason, a queue that hangs when it goes.
#include "Export/ExportQueue.h"

#include <future>
#include <map>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestClips.h"
#include "TestFrames.h"

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

constexpr int kEndless = 1000000;

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
    ExportQueue queue(corvane::testing::LoadBundle(), notes.Listener());
    ExportQueue::ID waiting = 0;
    std::promise<void> added;
    notes.onProgress = [&](ExportQueue::ID running) {
        if (waiting == 0) added.get_future().wait();
        EXPECT_TRUE(queue.IsTaken(folder.Path() / "." / "b.y4m"));
        queue.Cancel(waiting);
        EXPECT_FALSE(queue.IsTaken(folder / "b.y4m"));
        queue.Cancel(running);
        queue.Forget(running); // too early: nothing happens
        notes.onProgress = nullptr;
    };
    const auto running = queue.Add(Job(folder / "a.mp4", {.width = 64, .height = 48, .frames = kEndless}));
    const auto second = queue.Add(Job(folder / "b.y4m"));
    const auto third = queue.Add(Job(folder / "c.y4m"));
    waiting = second;
    added.set_value();
    EXPECT_EQ(notes.WaitFor(third).state, kDone);
    EXPECT_THAT(notes.Steps(),
                ElementsAre(Step(running, kRunning), Step(second, kCancelled), Step(running, kCancelled),
                            Step(third, kRunning), Step(third, kDone)));
    EXPECT_THAT(folder.Names(), ElementsAre("c.y4m"));
    EXPECT_EQ(queue.CountUnfinished(), 0u);
    queue.Forget(third);
    EXPECT_FALSE(queue.Status(third));
    EXPECT_TRUE(queue.Status(second));
}

TEST(ExportQueue, CancelsEverythingWhenItGoes) {
    const TestFolder folder;
    Notes notes;
    std::promise<void> runs;
    notes.onProgress = [&](ExportQueue::ID) {
        notes.onProgress = nullptr;
        runs.set_value();
    };
    {
        ExportQueue queue(corvane::testing::LoadBundle(), notes.Listener());
        for (const char* const name : {"a.y4m", "b.y4m"})
            queue.Add(Job(folder / name, {.width = 64, .height = 48, .frames = kEndless}));
        runs.get_future().wait();
        EXPECT_EQ(queue.CountUnfinished(), 2u);
    }
    EXPECT_THAT(notes.Steps(),
                testing::UnorderedElementsAre(Step(1, kRunning), Step(1, kCancelled), Step(2, kCancelled)));
    EXPECT_TRUE(folder.Names().empty());
}

/// What a job says in a process of its own, which `limit` deprives of something before; ends the process with
/// 0 where that tells of the output and of `word`.
[[noreturn]] void FailLimited(const fs::path& output, const std::function<bool()>& limit, const char* word) {
    Notes notes;
    ExportQueue queue(corvane::testing::LoadBundle(), notes.Listener());
    if (!limit()) _exit(2);
    const std::string failure = notes.WaitFor(queue.Add(Job(output, {.frames = 50}))).failure;
    const bool told = failure.starts_with((output.parent_path() / "a.").string()) &&
                      failure.find(word) != std::string::npos;
    if (!told) std::fprintf(stderr, "%s\n", failure.c_str());
    _exit(told ? 0 : 1);
}

TEST(ExportQueue, SaysWhyNothingCouldBeWritten) {
    const TestFolder folder;
    chmod(folder.Path().c_str(), 0555);
    const auto asNobody = [] { return geteuid() != 0 || seteuid(65534) == 0; };
    const auto fullDisk = [] {
        const rlimit limit{4096, 4096};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };
    for (const char* const name : {"a.mp4", "a.y4m", "a.%d.png"})
        EXPECT_EXIT(FailLimited(folder / name, asNobody, "may not be written to"), testing::ExitedWithCode(0),
                    "")
            << name;
    chmod(folder.Path().c_str(), 0755);
    for (const char* const name : {"a.mp4", "a.mkv", "a.y4m", "a.raw", "a.%d.png"})
        EXPECT_EXIT(FailLimited(folder / name, fullDisk, "limit"), testing::ExitedWithCode(0), "") << name;
    EXPECT_TRUE(folder.Names().empty());
}

} // namespace
