#include "CompareJob.h"

#include <chrono>
#include <cmath>
#include <exception>
#include <utility>

#include "Engine/Failure.h"

namespace corvane::desktop {

namespace {

PlacedPicture Kept(const FrameReading& reading) {
    PlacedPicture picture;
    picture.time = reading.time.value_or(-1);
    for (const auto& frame : reading.frame)
        if (frame && picture.frame < 0) picture.frame = std::llround(*frame);
    return picture;
}

} // namespace

CompareJob::CompareJob(std::shared_ptr<const Clip> clip, std::filesystem::path video)
    : mClip(std::move(clip)), mVideo(std::move(video)) {}

CompareJob::~CompareJob() {
    mCancel = true;
    if (mThread.joinable()) mThread.join();
}

void CompareJob::Start() {
    mThread = std::thread([this] { Work(); });
}

void CompareJob::Cancel() {
    mCancel = true;
}

void CompareJob::Work() {
    using Clock = std::chrono::steady_clock;
    constexpr auto kBetween = std::chrono::milliseconds(100);
    std::vector<PlacedPicture> pictures;
    CompareOptions options;
    options.onReading = [&](const FrameReading& reading) { pictures.push_back(Kept(reading)); };
    Clock::time_point next{};
    const auto progress = [&](std::int64_t done, std::int64_t total) {
        const Clock::time_point now = Clock::now();
        if (now < next) return;
        next = now + kBetween;
        mUI.Post([this, done, total] { Q_EMIT Progressed(done, total); });
    };
    QString why;
    try {
        const std::unique_ptr<Video> video = OpenVideo(mVideo);
        auto report =
            std::make_shared<const CompareReport>(CompareClip(*mClip, *video, options, progress, mCancel));
        mUI.Post([this, report = std::move(report), pictures = std::move(pictures)]() mutable {
            mPictures = std::move(pictures);
            Q_EMIT Finished(report);
        });
        return;
    } catch (const Failure& failure) {
        why = QString::fromUtf8(failure.what());
    } catch (const std::bad_alloc&) {
        why = tr("There is not enough memory to compare with this video.");
    } catch (const std::exception& exception) {
        why = tr("The video can't be compared (%1).").arg(QString::fromUtf8(exception.what()));
    }
    mUI.Post([this, why] { Q_EMIT Failed(why); });
}

} // namespace corvane::desktop
