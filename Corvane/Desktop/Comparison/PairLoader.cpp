#include "PairLoader.h"

#include <limits>
#include <utility>

#include "Engine/Failure.h"

namespace corvane::desktop {

namespace {

/// Further ahead than this, the video is sought rather than decoded on.
constexpr std::int64_t kDecodedOn = 48;

/// After a seek nobody knows the number of the next picture, only its time.
constexpr std::int64_t kSomewhere = std::numeric_limits<std::int64_t>::max();

} // namespace

PairLoader::PairLoader(std::shared_ptr<const Clip> clip, std::filesystem::path video)
    : mClip(std::move(clip)), mPath(std::move(video)), mThread([this] { Work(); }) {}

PairLoader::~PairLoader() {
    {
        const std::lock_guard lock(mMutex);
        mEnd = true;
    }
    mWake.notify_all();
    mThread.join();
}

void PairLoader::Want(std::int64_t number, const PlacedPicture& at) {
    {
        const std::lock_guard lock(mMutex);
        mWish = Wish{number, at};
    }
    mWake.notify_all();
}

void PairLoader::Work() {
    std::unique_lock lock(mMutex);
    while (true) {
        mWake.wait(lock, [this] { return mEnd || mWish; });
        if (mEnd) return;
        const Wish wish = *std::exchange(mWish, std::nullopt);
        lock.unlock();
        auto pair = std::make_shared<const PicturePair>(Make(wish));
        mUI.Post([this, pair = std::move(pair)] { Q_EMIT Made(pair); });
        lock.lock();
    }
}

PicturePair PairLoader::Make(const Wish& wish) {
    PicturePair pair;
    pair.number = wish.number;
    try {
        pair.found = Found(wish);
        if (!mClip->WhyNoFrameAt(wish.at.frame).empty())
            pair.problem = tr("This picture shows no frame of the clip.");
        else
            pair.expected = Expected(wish.at.frame);
    } catch (const Failure& failure) {
        pair.problem = QString::fromUtf8(failure.what());
        mVideo.reset();
    } catch (const std::bad_alloc&) {
        pair.problem = tr("There is not enough memory for this picture.");
        mVideo.reset();
    }
    return pair;
}

ReportImage PairLoader::Found(const Wish& wish) {
    if (!mVideo || wish.number < mNext || wish.number > mNext + kDecodedOn) {
        mVideo = OpenVideo(mPath);
        mNext = wish.at.time >= 0 && mVideo->SeekBefore(wish.at.time) ? kSomewhere : 0;
    }
    VideoPicture picture;
    while (mVideo->Next(picture)) {
        const bool isIt = mNext == kSomewhere ? picture.time.value_or(wish.at.time) >= wish.at.time
                                              : mNext++ == wish.number;
        if (!isIt) continue;
        mNext = wish.number + 1;
        return ImageOf(picture, TagsFor(mClip->Info().format).matrix, 1);
    }
    mVideo.reset();
    throw Failure(mPath.string() + ": this picture can't be decoded again; compare anew.");
}

ReportImage PairLoader::Expected(std::int64_t frame) const {
    return ImageOf(mClip->GetFrame(frame).View(), FactsOf(*mClip, 1), 1);
}

} // namespace corvane::desktop
