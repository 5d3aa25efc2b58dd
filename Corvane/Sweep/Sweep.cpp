#include "Sweep.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include <fmt/format.h>

#include "Export/ExportQueue.h"
#include "Export/Files/OutputFile.h"
#include "Export/FreeMemory.h"
#include "Export/Processors.h"
#include "Manifest.h"
#include "MemberExport.h"

namespace corvane {
namespace {

using Clock = std::chrono::steady_clock;

// Entries are safe: the manifest is for those who look at it meanwhile.
constexpr std::chrono::seconds kGatherEvery(10);
constexpr int kGatherShare = 20;
constexpr std::chrono::milliseconds kLookEvery(100);

std::uint64_t BytesOfFrame(const Member& member) {
    constexpr std::uint64_t kLargestPixel = 16;
    const Size size = member.spec.settings.size;
    return std::uint64_t{size.width} * size.height * kLargestPixel;
}

// One run over a family. Of one thread, but for `Note`.
class Run {
  public:
    Run(const Family& family, const SweepOptions& options, const SweepListener& listener,
        const std::atomic<bool>& cancel)
        : mFamily(family), mOptions(options), mListener(listener), mCancel(cancel),
          mManifest(family, !options.only) {}

    SweepReport Make(const std::shared_ptr<Bundle>& bundle) {
        FindWork();
        if (!mTodo.empty()) MakeMembers(bundle);
        mReport.cancelled =
            mCancel && mReport.made + mReport.kept + std::ssize(mReport.failed) < mReport.members;
        if (!mOptions.only) GatherAtEnd();
        return std::move(mReport);
    }

  private:
    using ID = ExportQueue::ID;
    struct Active {
        Member member;
        std::int64_t framesDone = 0;
    };

    void FindWork() {
        const auto [first, last] = mOptions.only.value_or(std::pair(std::int64_t{0}, mFamily.Count() - 1));
        mReport.members = last - first + 1;
        mReport.manifest = mFamily.Folder() / kManifestName;
        for (std::int64_t number = first; number <= last && !mCancel; ++number) {
            const Member member = mFamily.At(number);
            if (mManifest.IsMade(member)) {
                ++mReport.kept;
                continue;
            }
            mTodo.push_back(number);
            mStatus.total += member.Frames();
            mLargest = std::max(mLargest, BytesOfFrame(member));
        }
    }

    // Members run side by side, each on one thread: large ones lose nothing by it. Only memory bounds it.
    void ChooseThreads() {
        constexpr std::uint64_t kFramesOfMember = 6; // the export's own, and those that encoders keep
        const std::uint64_t fit = FreeMemory() / 2 / kFramesOfMember / std::max<std::uint64_t>(mLargest, 1);
        // One waits for the disk while another computes.
        const std::uint64_t wanted = mOptions.jobs != 0 ? mOptions.jobs : 2 * Processors();
        mAtOnce = static_cast<unsigned>(
            std::clamp<std::uint64_t>(std::min<std::uint64_t>(fit, mTodo.size()), 1, wanted));
        mThreads = std::max(1u, Processors() / mAtOnce);
    }

    void MakeMembers(const std::shared_ptr<Bundle>& bundle) {
        ChooseThreads();
        // Each export would put back what it found, and some find what another one set.
        const WriteSignalGuard guard;
        ExportQueue queue(
            bundle, [this](ID id, const ExportStatus& status) { Note(id, status); }, mAtOnce);
        mGathered = Clock::now();
        std::size_t next = 0;
        bool ended = false;
        while (next < mTodo.size() || !mActive.empty()) {
            while (!ended && next < mTodo.size() && mActive.size() < 2 * std::size_t{mAtOnce})
                ended = !Add(queue, mFamily.At(mTodo[next++]));
            for (const auto& [id, status] : WaitForEvents()) Take(queue, id, status);
            if (!std::exchange(ended, ended || mCancel || !mReport.stopped.empty()) && ended)
                queue.CancelAll();
            if (ended) next = mTodo.size();
            if (mListener.progress) mListener.progress(Status());
            if (!mOptions.only) GatherMeanwhile();
        }
    }

    bool Add(ExportQueue& queue, Member member) {
        ExportJob job;
        job.name = (mFamily.Folder() / member.settingsFile).string();
        job.source.settings = WriteSettings(member.spec.settings);
        job.options = ExportOf(mFamily, member);
        job.options.jobs = mThreads;
        job.options.memory = FreeMemory() / 2 / mAtOnce;
        job.options.beforeNaming = [this, member](const Clip& clip, const ExportReport& report,
                                                  const std::vector<std::filesystem::path>& working) {
            mManifest.Announce(member, clip, report, working);
        };
        try {
            mManifest.Prepare(member);
        } catch (const Failure& failure) {
            Fail(failure.what());
            return mReport.stopped.empty();
        }
        const ID id = queue.Add(std::move(job));
        mActive.emplace(id, Active{std::move(member)});
        return true;
    }

    // Told by the queue, on its threads.
    void Note(ID id, const ExportStatus& status) {
        const std::lock_guard lock(mMutex);
        mEvents.emplace_back(id, status);
        mWake.notify_one();
    }

    std::vector<std::pair<ID, ExportStatus>> WaitForEvents() {
        std::unique_lock lock(mMutex);
        mWake.wait_for(lock, kLookEvery, [this] { return !mEvents.empty(); });
        return std::exchange(mEvents, {});
    }

    void Take(ExportQueue& queue, ID id, const ExportStatus& status) {
        const auto found = mActive.find(id);
        if (found == mActive.end()) return;
        Active& active = found->second;
        active.framesDone = status.framesDone;
        if (!status.IsFinished()) return;
        queue.Forget(id);
        const Member member = std::move(active.member);
        mActive.erase(found);
        mStatus.done += member.Frames();
        if (status.state == ExportState::kFailed) return Fail(status.failure);
        if (status.state != ExportState::kDone) return;
        try {
            mManifest.Keep(member);
            ++mReport.made;
            mUngathered = true;
        } catch (const Failure& failure) {
            Fail(failure.what());
        }
    }

    void Fail(const std::string& sentence) {
        // Those that ran beside the one that found the disk full say the same.
        if (!mReport.stopped.empty()) return;
        mReport.failed.push_back(sentence);
        if (mListener.failed) mListener.failed(sentence);
        if (sentence.find(FileError::OfWriting(ENOSPC).what()) == std::string::npos) return;
        mReport.stopped =
            fmt::format("{}: the disk is full, so that the rest was not tried; free some space and run "
                        "this again, which goes on from here",
                        mFamily.Folder().string());
    }

    SweepStatus Status() const {
        SweepStatus status = mStatus;
        for (const auto& [id, active] : mActive) status.done += active.framesDone;
        return status;
    }

    void GatherMeanwhile() {
        const Clock::time_point start = Clock::now();
        if (!mUngathered ||
            start - mGathered < std::max<Clock::duration>(kGatherEvery, mGatherTime * kGatherShare))
            return;
        try {
            mManifest.Gather();
            mUngathered = false;
        } catch (const Failure&) {
            // It is tried again at the end, and told of then.
        }
        mGathered = Clock::now();
        mGatherTime = mGathered - start;
    }

    void GatherAtEnd() {
        try {
            mManifest.Gather();
            mManifest.RemoveEntries();
        } catch (const Failure& failure) {
            if (mReport.stopped.empty()) mReport.stopped = failure.what();
        }
    }

    const Family& mFamily;
    const SweepOptions& mOptions;
    const SweepListener& mListener;
    const std::atomic<bool>& mCancel;
    Manifest mManifest;
    SweepReport mReport;
    SweepStatus mStatus;             // of members that are finished
    std::vector<std::int64_t> mTodo; // numbers
    std::uint64_t mLargest = 0;      // bytes of a frame
    unsigned mAtOnce = 1, mThreads = 1;
    std::map<ID, Active> mActive;
    bool mUngathered = false;
    Clock::time_point mGathered{};
    Clock::duration mGatherTime{};

    std::mutex mMutex; // of those below
    std::condition_variable mWake;
    std::vector<std::pair<ID, ExportStatus>> mEvents;
};

} // namespace

SweepReport RunSweep(const Family& family, const std::shared_ptr<Bundle>& bundle, const SweepOptions& options,
                     const SweepListener& listener, const std::atomic<bool>& cancel) {
    const std::int64_t most = family.Count() - 1;
    const auto [first, last] = options.only.value_or(std::pair(std::int64_t{0}, most));
    if (first < 0 || first > last || last > most)
        throw UsageFailure(
            fmt::format("members {}:{} are not in the family; choose from 0:{}", first, last, most));
    return Run(family, options, listener, cancel).Make(bundle);
}

} // namespace corvane
