#include "PictureLoader.h"

#include <algorithm>
#include <utility>

namespace corvane::desktop {

namespace {

/// Two: one very large frame doesn't hold up the next, and playback of large frames uses two cores.
constexpr int kThreads = 2;

bool SamePicture(const PictureRequest& one, const PictureRequest& other) {
    return one.clip == other.clip && one.frame == other.frame && one.look == other.look;
}

} // namespace

PictureLoader::PictureLoader(QObject* parent) : QObject(parent) {
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
            const auto same = [&](const PictureRequest* busy) { return SamePicture(*busy, request); };
            if (std::ranges::none_of(mBusy, same)) mWanted.push_back(std::move(request));
        }
    }
    mWake.notify_all();
}

bool PictureLoader::CanBegin() const {
    if (mWanted.empty()) return false;
    const auto large = [](const PictureRequest& request) { return FrameBytes(*request.clip) > kLargeFrame; };
    const auto busy = [&](const PictureRequest* request) { return large(*request); };
    return std::ranges::none_of(mBusy, busy) || !large(mWanted.front());
}

void PictureLoader::Work() {
    PictureMaker maker;
    std::unique_lock lock(mMutex);
    while (true) {
        mWake.wait(lock, [this] { return mEnd || CanBegin(); });
        if (mEnd) return;
        PictureRequest request = std::move(mWanted.front());
        mWanted.pop_front();
        const PictureRequest busy = request;
        mBusy.push_back(&busy);
        lock.unlock();
        Picture made = maker.Make(std::move(request));
        lock.lock();
        std::erase(mBusy, &busy);
        lock.unlock();
        mWake.notify_one(); // the other thread may wait for the end of a large one
        Deliver(std::move(made));
        lock.lock();
    }
}

void PictureLoader::Deliver(Picture made) {
    QMetaObject::invokeMethod(
        this, [this, picture = std::make_shared<const Picture>(std::move(made))] { Q_EMIT Made(picture); },
        Qt::QueuedConnection);
}

} // namespace corvane::desktop
