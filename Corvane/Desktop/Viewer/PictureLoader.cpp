#include "PictureLoader.h"

#include <algorithm>
#include <utility>

#include <malloc.h>

namespace corvane::desktop {

namespace {

/// Two: one very large frame doesn't hold up the next, and playback of large frames uses two cores.
constexpr int kThreads = 2;

bool IsLarge(const PictureRequest& request) {
    return FrameBytes(*request.clip) > kLargeFrame;
}

/// Lets the memory of pictures be used again rather than given back, in the whole process: the pages of fresh
/// memory took half of the time from asking for a frame to seeing it.
void KeepPictureMemory() {
#ifdef __GLIBC__
    constexpr int kMiB = 1 << 20;
    ::mallopt(M_MMAP_THRESHOLD, 32 * kMiB); // the largest threshold there is
    ::mallopt(M_TRIM_THRESHOLD, 128 * kMiB);
    ::mallopt(M_TOP_PAD, 16 * kMiB);
#endif
}

} // namespace

PictureLoader::PictureLoader(QObject* parent) : QObject(parent) {
    KeepPictureMemory();
    for (int i = 0; i < kThreads; ++i) mThreads.emplace_back([this] { Work(); });
}

PictureLoader::~PictureLoader() {
    {
        const std::lock_guard lock(mMutex);
        mEnd = true;
    }
    mWake.notify_all();
    for (std::thread& thread : mThreads) thread.join();
}

void PictureLoader::Want(std::vector<PictureRequest> requests) {
    std::deque<PictureRequest> unwanted; // destroyed without the lock
    {
        const std::lock_guard lock(mMutex);
        unwanted.swap(mWanted);
        for (PictureRequest& request : requests) {
            const auto same = [&](const Busy& busy) {
                return busy.clip == request.clip.get() && busy.frame == request.frame &&
                       busy.look == request.look;
            };
            if (std::ranges::none_of(mBusy, same)) mWanted.push_back(std::move(request));
        }
    }
    mWake.notify_all();
}

bool PictureLoader::CanBegin() const {
    if (mWanted.empty()) return false;
    return std::ranges::none_of(mBusy, &Busy::large) || !IsLarge(mWanted.front());
}

void PictureLoader::Work() {
    PictureMaker maker;
    std::unique_lock lock(mMutex);
    while (true) {
        mWake.wait(lock, [this] { return mEnd || CanBegin(); });
        if (mEnd) return;
        PictureRequest request = std::move(mWanted.front());
        mWanted.pop_front();
        const auto busy =
            mBusy.insert(mBusy.end(), {request.clip.get(), request.frame, request.look, IsLarge(request)});
        lock.unlock();
        auto made = std::make_shared<const Picture>(maker.Make(std::move(request)));
        lock.lock();
        mBusy.erase(busy);
        // Moved, not copied: the UI thread has the only reference, and so the last one.
        mUI.Post([this, picture = std::move(made)] { Q_EMIT Made(picture); });
        mWake.notify_one(); // the other thread may be waiting for a large one to end
    }
}

} // namespace corvane::desktop
