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

/// An export to come. It holds the clip's settings, so that later changes of the clip don't reach it; those
/// of a clip in a file are read when its turn comes.
struct ExportJob {
    std::string name; ///< of the clip, for people; UTF-8
    ClipSource source;
    ExportOptions options;
};

enum class ExportState { kWaiting, kRunning, kDone, kCancelled, kFailed };

/// How far a job is.
struct ExportStatus {
    ExportState state = ExportState::kWaiting;
    std::int64_t framesDone = 0;
    std::int64_t framesTotal = 0; ///< 0 until the first frame is done
    double seconds = 0;           ///< since it began to run
    ExportReport report;          ///< once it is done
    std::string failure;          ///< why it failed, as a sentence

    bool IsFinished() const { return state != ExportState::kWaiting && state != ExportState::kRunning; }
    double FramesPerSecond() const;
    /// Empty where it can't be told yet.
    std::optional<double> SecondsLeft() const;
};

/// Exports one job after the other on a thread of its own, which leaves the processors to others that want
/// them. All members: any thread.
class ExportQueue {
  public:
    using ID = std::uint64_t;
    /// Told of every change of a job's state, and of its progress a few times a second: on the queue's
    /// thread, or for a job that was cancelled while it waited on the thread that did so. It may call the
    /// queue.
    using Listener = std::function<void(ID, const ExportStatus&)>;

    ExportQueue(std::shared_ptr<Bundle> bundle, Listener listener);
    /// Cancels what is unfinished and waits until the running job has tidied up, which takes a frame's time.
    /// No listener is called afterwards.
    ~ExportQueue();
    ExportQueue(const ExportQueue&) = delete;
    ExportQueue& operator=(const ExportQueue&) = delete;

    ID Add(ExportJob job);
    /// Cancels a job that waits or runs; nothing of it is left behind. The one that runs ends at its next
    /// frame.
    void Cancel(ID id);
    void CancelAll();
    /// Forgets a finished job; does nothing with another.
    void Forget(ID id);

    /// Empty for a job that was never there or is forgotten.
    std::optional<ExportStatus> Status(ID id) const;
    std::size_t CountUnfinished() const;
    /// Whether an unfinished job is to make this file.
    bool IsTaken(const std::filesystem::path& output) const;

  private:
    struct Entry;
    using EntryPtr = std::shared_ptr<Entry>;

    void RunJobs();
    void RunJob(Entry& entry);
    void Export(Entry& entry);
    void Fail(Entry& entry, const std::string& reason);
    void Update(Entry& entry, const std::function<void(ExportStatus&)>& change);
    void CancelWhere(const std::function<bool(const Entry&)>& chosen);

    const std::shared_ptr<Bundle> mBundle;
    const Listener mListener;
    mutable std::mutex mMutex; // of all below, and of the entries' status
    std::condition_variable mWake;
    std::vector<EntryPtr> mEntries;
    std::deque<EntryPtr> mWaiting;
    ID mLast = 0;
    bool mEnding = false;
    std::thread mThread; // from the first job on
};

} // namespace corvane
