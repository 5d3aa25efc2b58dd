#include "ExportQueue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include <fmt/format.h>

namespace corvane {

using Clock = std::chrono::steady_clock;

struct ExportQueue::Entry {
    ID id = 0;
    ExportJob job;
    std::atomic<bool> cancel{false};
    ExportStatus status; // guarded by the queue's mutex
};

namespace {

constexpr std::chrono::milliseconds kTellEvery(100);

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Of the calling thread and those that it will start: on Linux every thread has its own priority.
void LowerPriority() {
    constexpr int kBackground = 10;
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kBackground);
}

} // namespace

double ExportStatus::FramesPerSecond() const {
    return seconds > 0 ? static_cast<double>(framesDone) / seconds : 0;
}

std::optional<double> ExportStatus::SecondsLeft() const {
    const double rate = FramesPerSecond();
    if (rate <= 0) return std::nullopt;
    return static_cast<double>(framesTotal - framesDone) / rate;
}

ExportQueue::ExportQueue(std::shared_ptr<Bundle> bundle, Listener listener, unsigned atOnce)
    : mBundle(std::move(bundle)), mListener(std::move(listener)), mAtOnce(atOnce) {}

ExportQueue::~ExportQueue() {
    CancelAll();
    {
        const std::lock_guard lock(mMutex);
        mEnding = true;
    }
    mWake.notify_all();
    for (std::thread& thread : mThreads) thread.join();
}

ExportQueue::ID ExportQueue::Add(ExportJob job) {
    const auto entry = std::make_shared<Entry>();
    entry->job = std::move(job);
    bool runs = true;
    {
        const std::lock_guard lock(mMutex);
        entry->id = ++mLast;
        mEntries.push_back(entry);
        runs = Start();
        if (runs) mWaiting.push_back(entry);
    }
    mWake.notify_all();
    if (!runs)
        Fail(*entry, fmt::format("{}: the system can't start a thread for the export; end other programs",
                                 entry->job.options.output.string()));
    return entry->id;
}

bool ExportQueue::Start() {
    try {
        const auto busy = static_cast<std::size_t>(std::ranges::count_if(
            mEntries, [](const EntryPtr& entry) { return !entry->status.IsFinished(); }));
        if (mThreads.size() < std::min<std::size_t>(mAtOnce, busy))
            mThreads.emplace_back([this] { RunJobs(); });
    } catch (const std::system_error&) {
        // Those that run will do.
    }
    return !mThreads.empty();
}

void ExportQueue::Cancel(ID id) {
    CancelWhere([id](const Entry& entry) { return entry.id == id; });
}

void ExportQueue::CancelAll() {
    CancelWhere([](const Entry&) { return true; });
}

void ExportQueue::CancelWhere(const std::function<bool(const Entry&)>& chosen) {
    std::vector<EntryPtr> dropped;
    {
        const std::lock_guard lock(mMutex);
        for (const EntryPtr& entry : mEntries)
            if (chosen(*entry)) entry->cancel = true;
        std::erase_if(mWaiting, [&](const EntryPtr& entry) {
            if (entry->cancel) dropped.push_back(entry);
            return entry->cancel.load();
        });
    }
    for (const EntryPtr& entry : dropped)
        Update(*entry, [](ExportStatus& status) { status.state = ExportState::kCancelled; });
}

void ExportQueue::Forget(ID id) {
    const std::lock_guard lock(mMutex);
    std::erase_if(mEntries, [id](const EntryPtr& e) { return e->id == id && e->status.IsFinished(); });
}

std::optional<ExportStatus> ExportQueue::Status(ID id) const {
    const std::lock_guard lock(mMutex);
    const auto found =
        std::ranges::find_if(mEntries, [id](const EntryPtr& entry) { return entry->id == id; });
    return found != mEntries.end() ? std::optional((*found)->status) : std::nullopt;
}

std::size_t ExportQueue::CountUnfinished() const {
    const std::lock_guard lock(mMutex);
    return static_cast<std::size_t>(
        std::ranges::count_if(mEntries, [](const EntryPtr& entry) { return !entry->status.IsFinished(); }));
}

bool ExportQueue::IsTaken(const std::filesystem::path& output) const {
    const std::lock_guard lock(mMutex);
    return std::ranges::any_of(mEntries, [&](const EntryPtr& entry) {
        return !entry->status.IsFinished() &&
               entry->job.options.output.lexically_normal() == output.lexically_normal();
    });
}

void ExportQueue::Update(Entry& entry, const std::function<void(ExportStatus&)>& change) {
    ExportStatus status;
    {
        const std::lock_guard lock(mMutex);
        change(entry.status);
        status = entry.status;
    }
    if (mListener) mListener(entry.id, status);
}

void ExportQueue::RunJobs() {
    LowerPriority();
    while (true) {
        EntryPtr entry;
        {
            std::unique_lock lock(mMutex);
            mWake.wait(lock, [this] { return mEnding || !mWaiting.empty(); });
            if (mWaiting.empty()) return;
            entry = mWaiting.front();
            mWaiting.pop_front();
        }
        RunJob(*entry);
    }
}

void ExportQueue::RunJob(Entry& entry) {
    Update(entry, [](ExportStatus& status) { status.state = ExportState::kRunning; });
    const std::string output = entry.job.options.output.string();
    try {
        Export(entry);
    } catch (const Failure& failure) {
        Fail(entry, failure.what());
    } catch (const std::bad_alloc&) {
        Fail(entry,
             fmt::format("{}: there is not enough memory for this export; make the clip smaller or end "
                         "other programs",
                         output));
    } catch (const std::exception& exception) {
        Fail(entry, fmt::format("{}: {}", output, exception.what()));
    }
}

void ExportQueue::Export(Entry& entry) {
    const Clock::time_point start = Clock::now();
    Clock::time_point told = start - kTellEvery;
    const ExportProgress progress = [&](std::int64_t done, std::int64_t total) {
        const Clock::time_point now = Clock::now();
        if (now - told < kTellEvery && done < total) return;
        told = now;
        Update(entry, [&](ExportStatus& status) {
            status.framesDone = done;
            status.framesTotal = total;
            status.seconds = SecondsSince(start);
        });
    };
    ExportReport report;
    {
        const auto clip = OpenClip(mBundle, entry.job.name, entry.job.source);
        report = ExportClip(*clip, entry.job.options, progress, entry.cancel);
    }
    Update(entry, [&](ExportStatus& status) {
        status.seconds = SecondsSince(start);
        status.report = report;
        status.state = report.cancelled ? ExportState::kCancelled : ExportState::kDone;
    });
}

void ExportQueue::Fail(Entry& entry, const std::string& reason) {
    Update(entry, [&](ExportStatus& status) {
        status.state = ExportState::kFailed;
        status.failure = reason;
    });
}

} // namespace corvane
