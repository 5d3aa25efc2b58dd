#include "PairLoader.h"

#include <utility>

#include "Engine/Failure.h"

namespace corvane::desktop {

namespace {

/// Further ahead than this, the video is sought rather than decoded on.
constexpr std::int64_t kDecodedOn = 48;

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
        if (wish.at.frame < 0)
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

QImage PairLoader::Found(const Wish& wish) {
    if (!mVideo || wish.number < mNext || wish.number > mNext + kDecodedOn) {
        mVideo = OpenVideo(mPath);
        mNext = 0;
        if (wish.at.time >= 0 && mVideo->SeekBefore(wish.at.time)) mNext = -1; // somewhere
    }
    VideoPicture picture;
    while (mVideo->Next(picture)) {
        const bool isIt =
            mNext >= 0 ? mNext == wish.number : picture.time.value_or(wish.at.time) >= wish.at.time;
        if (mNext >= 0) ++mNext;
        if (!isIt) continue;
        mNext = wish.number + 1;
        QImage image(static_cast<int>(picture.size.width), static_cast<int>(picture.size.height),
                     QImage::Format_RGB32);
        if (image.isNull()) throw std::bad_alloc();
        mImage.Convert(picture, reinterpret_cast<std::byte*>(image.bits()), image.bytesPerLine());
        return image;
    }
    mVideo.reset();
    throw Failure(mPath.string() + ": this picture can't be decoded again; compare anew.");
}

QImage PairLoader::Expected(std::int64_t frame) {
    if (!mClip->WhyNoFrameAt(frame).empty()) return {};
    PictureRequest request;
    request.clip = mClip;
    request.frame = frame;
    const ClipFormat& format = mClip->Info().format;
    request.look.size = QSize(static_cast<int>(format.size.width), static_cast<int>(format.size.height));
    request.look.part = QRect(QPoint(), request.look.size);
    const Picture picture = mMaker.Make(std::move(request));
    if (!picture.problem.isEmpty()) throw Failure(picture.problem.toStdString());
    return picture.image;
}

} // namespace corvane::desktop
