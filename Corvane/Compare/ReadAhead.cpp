#include "ReadAhead.h"

#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kAhead = 3; // pictures that wait: decoders hold some more

} // namespace

ReadAhead::ReadAhead(Video& video) : mVideo(video), mThread([this] { Run(); }) {}

ReadAhead::~ReadAhead() {
    {
        const std::lock_guard lock(mMutex);
        mStopped = true;
    }
    mChanged.notify_all();
    mThread.join();
}

std::optional<VideoPicture> ReadAhead::Next() {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [this] { return !mPictures.empty() || mEnded; });
    if (mPictures.empty()) {
        if (mFailure) std::rethrow_exception(std::exchange(mFailure, nullptr));
        return std::nullopt;
    }
    VideoPicture picture = std::move(mPictures.front());
    mPictures.pop_front();
    lock.unlock();
    mChanged.notify_all();
    return picture;
}

void ReadAhead::Run() {
    std::exception_ptr failure;
    try {
        VideoPicture picture;
        while (mVideo.Next(picture)) {
            std::unique_lock lock(mMutex);
            mChanged.wait(lock, [this] { return mPictures.size() < kAhead || mStopped; });
            if (mStopped) break;
            mPictures.push_back(std::move(picture));
            lock.unlock();
            mChanged.notify_all();
            picture = {};
        }
    } catch (...) {
        failure = std::current_exception();
    }
    const std::lock_guard lock(mMutex);
    mFailure = failure;
    mEnded = true;
    mChanged.notify_all();
}

} // namespace corvane
