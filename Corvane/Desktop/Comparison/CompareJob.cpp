#include "CompareJob.h"

#include <chrono>
#include <cmath>
#include <exception>
#include <system_error>
#include <utility>

#include "Engine/Failure.h"

namespace corvane::desktop {

namespace {

/// Keeps of each picture what finds it again.
class Keeper {
  public:
    void Add(const FrameReading& reading) {
        mPictures.resize(static_cast<std::size_t>(reading.picture)); // those in between could not be read
        PlacedPicture picture;
        // A time that is not later than all before it leads to another picture.
        if (reading.time && *reading.time > mLatest) picture.time = mLatest = *reading.time;
        for (const auto& frame : reading.frame)
            if (frame && picture.frame < 0) picture.frame = std::llround(*frame);
        mPictures.push_back(picture);
    }
    std::vector<PlacedPicture> Finish(std::int64_t pictures) {
        mPictures.resize(static_cast<std::size_t>(pictures));
        return std::move(mPictures);
    }

  private:
    std::vector<PlacedPicture> mPictures;
    std::int64_t mLatest = -1;
};

void RefusePipe(const std::filesystem::path& video) {
    std::error_code error;
    if (std::filesystem::is_fifo(video, error))
        throw Failure(video.string() + ": this is a pipe, whose pictures can't be shown again; choose a "
                                       "file, or use `synthex compare`.");
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
    Keeper keeper;
    CompareOptions options;
    options.onReading = [&](const FrameReading& reading) { keeper.Add(reading); };
    Clock::time_point next{};
    const auto progress = [&](std::int64_t done, std::int64_t total) {
        const Clock::time_point now = Clock::now();
        if (now < next) return;
        next = now + kBetween;
        mUI.Post([this, done, total] { Q_EMIT Progressed(done, total); });
    };
    QString why;
    try {
        RefusePipe(mVideo);
        const std::unique_ptr<Video> video = OpenVideo(mVideo, &mCancel);
        auto report =
            std::make_shared<const CompareReport>(CompareClip(*mClip, *video, options, progress, mCancel));
        auto pictures = keeper.Finish(report->framesCompared);
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
