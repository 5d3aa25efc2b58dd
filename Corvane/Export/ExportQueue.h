#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Engine/Project.h"
#include "Export.h"

namespace corvane {

/// An export to be made. It holds the clip's settings, so that later changes to the clip don't reach it; the
/// settings of a clip in a file are read when the job's turn comes.
struct ExportJob {
    std::string name; ///< of the clip, for people; UTF-8
    ClipSource source;
    ExportOptions options;
};

/// What a job is at. It waits, runs, and then stays in one of the other states.
enum class ExportState { kWaiting, kRunning, kDone, kCancelled, kFailed };

/// Whether a job in this state is done, cancelled or failed.
inline bool IsFinished(ExportState state) {
    return state != ExportState::kWaiting && state != ExportState::kRunning;
}

/// How far along a job is.
struct ExportStatus {
    ExportState state = ExportState::kWaiting;
    std::int64_t framesDone = 0;
    std::int64_t framesTotal = 0; ///< 0 until the first frame is done
    double seconds = 0;           ///< since it began to run
    ExportReport report;          ///< once it is done
    std::string failure;          ///< why it failed, as a sentence

    bool IsFinished() const { return corvane::IsFinished(state); }
    double FramesPerSecond() const; ///< 0 until it can be told
    /// Empty until it can be told.
    std::optional<double> SecondsLeft() const;
};

/// Exports one job after the other, or several at once, on threads of its own, which have a low priority. A
/// job that fails does not hold up the others. All members: any thread; they fail only for want of memory.
class ExportQueue {
  public:
    using ID = std::uint64_t;
    /// Told of every change of a job's state, and a few times a second of its progress, on the job's
    /// thread. If a waiting job is cancelled, told on the thread that cancels it; if the queue can't have a
    /// thread, on the one that adds the job. It may call the queue and must not throw.
    using Listener = std::function<void(ID, const ExportStatus&)>;

    /// `bundle` makes the clips. `listener` may be empty. `atOnce` jobs run side by side, or as many as the
    /// system has threads for.
    ExportQueue(std::shared_ptr<Bundle> bundle, Listener listener, unsigned atOnce = 1);
    /// Cancels what is unfinished and waits until running jobs have tidied up, which takes a frame's time.
    /// The listener is not called afterwards.
    ~ExportQueue();
    ExportQueue(const ExportQueue&) = delete;
    ExportQueue& operator=(const ExportQueue&) = delete;

    /// Puts a job behind the others. IDs count from 1.
    ID Add(ExportJob job);
    /// Cancels a job that waits or runs; nothing of it is left behind. A running job ends at its next frame.
    void Cancel(ID id);
    /// Cancels all of them.
    void CancelAll();
    /// Forgets a job if it is finished.
    void Forget(ID id);

    /// How far along a job is; empty if it was never there or is forgotten.
    std::optional<ExportStatus> Status(ID id) const;
    /// How many jobs wait or run.
    std::size_t CountUnfinished() const;
    /// Whether an unfinished job is to make this file.
    bool IsTaken(const std::filesystem::path& output) const;

  private:
    struct Entry;
    using EntryPtr = std::shared_ptr<Entry>;

    bool Start();
    void RunJobs();
    void RunJob(Entry& entry);
    void Export(Entry& entry);
    void Fail(Entry& entry, const std::string& reason);
    void Update(Entry& entry, const std::function<void(ExportStatus&)>& change);
    void CancelWhere(const std::function<bool(const Entry&)>& chosen);

    const std::shared_ptr<Bundle> mBundle;
    const Listener mListener;
    const unsigned mAtOnce;
    mutable std::mutex mMutex; // of all below, and of the entries' status
    std::condition_variable mWake;
    std::vector<EntryPtr> mEntries;
    std::deque<EntryPtr> mWaiting;
    ID mLast = 0;
    bool mEnding = false;
    std::vector<std::thread> mThreads; // as many as there were jobs for
};

} // namespace corvane
