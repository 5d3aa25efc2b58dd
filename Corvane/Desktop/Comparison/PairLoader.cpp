#include "PairLoader.h"

#include <utility>

#include "Engine/Failure.h"

namespace corvane::desktop {

namespace {

/// Further ahead than this, the video is sought rather than decoded on.
constexpr std::int64_t kDecodedOn = 48;

/// After so many pictures a newer wish is served, though this one was not: videos that can't be sought are
/// decoded from their start.
constexpr int kPatience = 500;

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
        // Nothing is shown of a wish that was given up.
        if (!pair->found.pixels.empty() || !pair->problem.isEmpty())
            mUI.Post([this, pair = std::move(pair)] { Q_EMIT Made(pair); });
        lock.lock();
    }
}

PicturePair PairLoader::Make(const Wish& wish) {
    PicturePair pair;
    pair.number = wish.number;
    try {
        pair.found = Found(wish);
        if (pair.found.pixels.empty()) return pair;
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
    if (!mVideo || !mNext || wish.number < *mNext || wish.number > *mNext + kDecodedOn) GoNear(wish);
    const bool sought = !mNext;
    std::optional<VideoPicture> picture = Decode(wish);
    if (!picture && sought && !IsOver(0)) {
        // Its index, or its times, lead elsewhere.
        GoNear({wish.number, {}});
        picture = Decode(wish);
    }
    if (picture) return ImageOf(*picture, TagsFor(mClip->Info().format).matrix, 1);
    if (IsOver(kPatience)) return {};
    throw Failure(mPath.string() + ": this picture can't be decoded again; compare anew.");
}

void PairLoader::GoNear(const Wish& wish) {
    mNext = std::nullopt;
    const bool seeks = wish.at.time >= 0 && wish.number > kDecodedOn;
    if (seeks && mVideo && mVideo->SeekBefore(wish.at.time)) return;
    mVideo = OpenVideo(mPath);
    if (!seeks || !mVideo->SeekBefore(wish.at.time)) mNext = 0;
}

std::optional<VideoPicture> PairLoader::Decode(const Wish& wish) {
    VideoPicture picture;
    for (int decoded = 0; !IsOver(decoded) && mVideo->Next(picture); ++decoded) {
        if (mNext) {
            if ((*mNext)++ == wish.number) return picture;
            continue;
        }
        if (picture.time.value_or(-1) < wish.at.time) continue;
        if (picture.time != wish.at.time || picture.damaged) return std::nullopt;
        mNext = wish.number + 1;
        return picture;
    }
    return std::nullopt;
}

bool PairLoader::IsOver(int decoded) {
    const std::lock_guard lock(mMutex);
    return mEnd || (mWish && decoded >= kPatience);
}

ReportImage PairLoader::Expected(std::int64_t frame) const {
    return ImageOf(mClip->GetFrame(frame).View(), FactsOf(*mClip, 1), 1);
}

} // namespace corvane::desktop
