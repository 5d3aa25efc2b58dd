// Which pictures the viewer wants, when it shows them, and what keeps time.
#include <algorithm>
#include <limits>
#include <utility>

#include <QLabel>

#include "PictureArea.h"
#include "Viewer.h"
#include "ViewerActions.h"
#include "lummediatypes.h"

namespace corvane::desktop {

namespace {

/// How many pictures are made ahead of the playhead if their frames take little memory.
constexpr std::int64_t kAhead = 3;
constexpr std::uint64_t kSmallFrame = std::uint64_t{64} << 20;

constexpr std::int64_t kNanosecondsPerMillisecond = 1000000;
constexpr int kFastest = 32;                          // times the clip's speed
constexpr std::int64_t kLongestWait = 60 * 60 * 1000; // milliseconds

std::int64_t AheadOf(const Clip& clip) {
    const std::uint64_t bytes = FrameBytes(clip);
    return bytes <= kSmallFrame ? kAhead : bytes <= kLargeFrame ? 1 : 0;
}

} // namespace

PictureRequest Viewer::RequestFor(std::int64_t frame, std::int64_t step) const {
    PictureRequest request{mClip, frame, mArea->GetLook(), mOrder, step, nullptr};
    const PicturePointer& shown = mArea->GetPicture();
    if (shown && shown->request.clip == mClip && shown->request.frame == frame) request.held = shown->frame;
    return request;
}

bool Viewer::IsShown(const PictureRequest& request) const {
    const PicturePointer& shown = mArea->GetPicture();
    return shown && shown->request.clip == request.clip && shown->request.frame == request.frame &&
           shown->request.look == request.look;
}

void Viewer::WantPictures() {
    if (!mClip || mArea->GetLook().part.isEmpty()) return;
    ++mOrder;
    std::vector<PictureRequest> requests;
    PictureRequest now = RequestFor(mFrame, mStep);
    // Lets go of the frame that is on the screen if the next one needs the memory.
    if (!now.held && FrameBytes(*mClip) > kLargeFrame) mArea->ReleaseFrame();
    if (IsPlaying()) WantAhead(requests);
    // A picture that can't be ready in time is made only if there is no better one to make.
    const bool late = IsPlaying() && StepsLate() > 0;
    if (!IsShown(now) && (!late || requests.empty())) requests.insert(requests.begin(), std::move(now));
    mLoader.Want(std::move(requests));
}

/// How many steps pass while one picture is made. If any do, it is no use asking for the one that is due now.
std::int64_t Viewer::StepsLate() const {
    const __int128 ticks = static_cast<__int128>(mAverage) * lummediatypes::kTicksPerSecond / 1000000000;
    return static_cast<std::int64_t>(ticks / mClip->Info().ticksPerFrame);
}

void Viewer::WantAhead(std::vector<PictureRequest>& requests) const {
    const std::int64_t ahead = AheadOf(*mClip);
    const std::int64_t late = StepsLate();
    const std::int64_t last = late > 0 ? late + std::min<std::int64_t>(ahead, 1) : ahead;
    for (std::int64_t i = late > 0 ? late + 1 : 1; i <= last; ++i) {
        PictureRequest request = RequestFor(mPlayback.FrameOf(mStep + i), mStep + i);
        if (request.frame != mFrame && !mReady.contains(request.frame))
            requests.push_back(std::move(request));
    }
}

void Viewer::KeepReady(std::int64_t ahead) {
    std::map<std::int64_t, PicturePointer> kept;
    for (std::int64_t i = 1; i <= ahead && !mReady.empty(); ++i)
        if (auto node = mReady.extract(mPlayback.FrameOf(mStep + i))) kept.insert(std::move(node));
    mReady = std::move(kept);
}

void Viewer::TakePicture(const PicturePointer& picture) {
    const PictureRequest& request = picture->request;
    if (request.clip != mClip) return;
    mAverage = mAverage == 0 ? picture->nanoseconds : (mAverage * 3 + picture->nanoseconds) / 4;
    if (IsPlaying()) return TakePicturePlaying(picture);
    // While a person scrubs, the newest picture is shown, if only for a moment.
    const bool wanted = request.frame == mFrame && request.look == mArea->GetLook();
    if (wanted || request.order > mShownOrder) Show(picture, 0);
}

void Viewer::TakePicturePlaying(const PicturePointer& picture) {
    const PictureRequest& request = picture->request;
    if (request.look != mArea->GetLook()) return;
    if (request.frame == mFrame) return Show(picture, mStep);
    if (request.order < mFirstPlayed) return;
    // It is late, but newer than what is on the screen; otherwise it is for a later step.
    if (request.step < mStep && request.step > mShownStep) return Show(picture, request.step);
    if (request.step > mStep) mReady[request.frame] = picture;
}

void Viewer::Show(const PicturePointer& picture, std::int64_t step) {
    mShownOrder = std::max(mShownOrder, picture->request.order);
    mShownStep = step;
    mArea->ShowPicture(picture, step);
    // Frames are not dropped if the window can't be seen.
    if (mArea->visibleRegion().isEmpty()) mPlayback.Shown(step);
}

void Viewer::NotePainted(const PicturePointer& picture, std::int64_t step) {
    // A step that is still ahead belongs to an earlier playback.
    if (IsPlaying() && picture->request.clip == mClip && step <= mStep) {
        mPlayback.Shown(step);
        ShowDropped();
    }
    ShowReadout();
    if (picture->problem.isEmpty()) Q_EMIT FrameShown(picture->request.frame);
}

void Viewer::Play() {
    if (!mClip || IsPlaying()) return;
    mSpeed = 1;
    const bool atEnd = mFrame == mClip->Info().frames - 1 && !mActions->loop->isChecked();
    StartPlaying(atEnd ? 0 : mFrame);
}

/// Plays in a direction, or twice as fast if that is how it plays already.
void Viewer::Shuttle(int direction) {
    if (!mClip) return;
    const bool faster = IsPlaying() && (mSpeed > 0) == (direction > 0);
    if (!IsPlaying() && direction > 0) return Play();
    mSpeed = faster ? std::clamp(mSpeed * 2, -kFastest, kFastest) : direction;
    const std::int64_t last = mClip->Info().frames - 1;
    const bool atEnd = !IsPlaying() && mFrame == 0 && !mActions->loop->isChecked();
    StartPlaying(atEnd ? last : mFrame);
}

void Viewer::Pause() {
    if (IsPlaying()) StopPlaying();
}

void Viewer::StartPlaying(std::int64_t frame) {
    const bool started = !IsPlaying();
    const ClipInfo& info = mClip->Info();
    mPlayback.Start(frame, info.frames, info.ticksPerFrame, mActions->loop->isChecked(), mSpeed);
    mFirstPlayed = mOrder + 1;
    mStep = mShownStep = 0;
    mReady.clear();
    mActions->ShowPlaying(true);
    ShowDropped();
    if (started) Q_EMIT PlayingChanged(true);
    Tick();
}

void Viewer::StopPlaying() {
    mTimer.stop();
    mReady.clear();
    if (!IsPlaying()) return;
    mPlayback.Stop();
    mActions->ShowPlaying(false);
    WantPictures();
    Q_EMIT PlayingChanged(false);
}

void Viewer::SetLoop(bool loop) {
    if (IsPlaying()) {
        mShownStep -= mPlayback.DueStep();
        mFirstPlayed = mOrder + 1;
        mReady.clear();
    }
    mPlayback.SetLoop(loop);
    mStep = 0;
    if (IsPlaying()) Tick();
}

void Viewer::SetClock(PlaybackClock clock) {
    StopPlaying();
    mPlayback.SetClock(std::move(clock));
}

void Viewer::Tick() {
    if (!IsPlaying()) return;
    mStep = mPlayback.DueStep();
    MovePlayhead(mPlayback.FrameOf(mStep));
    if (mPlayback.IsOver()) {
        mPlayback.Shown(mStep); // it stays on the screen, or is about to appear
        ShowDropped();
        return StopPlaying();
    }
    if (IsShown(RequestFor(mFrame, mStep))) {
        mShownStep = mStep;
        if (mArea->IsPainted()) mPlayback.Shown(mStep);
    } else if (const auto ready = mReady.find(mFrame); ready != mReady.end()) {
        Show(PicturePointer(ready->second), mStep);
    }
    KeepReady(std::max(AheadOf(*mClip), StepsLate() + 1));
    WantPictures();
    const std::int64_t wait =
        (mPlayback.NanosecondsUntil(mStep + 1) + kNanosecondsPerMillisecond - 1) / kNanosecondsPerMillisecond;
    mTimer.start(static_cast<int>(std::min(wait, kLongestWait)));
}

void Viewer::ShowDropped() {
    const QString dropped = tr("%1 dropped").arg(QString::number(mPlayback.GetDropped()));
    mDropped->setText(mSpeed == 1 ? dropped : tr("%1 x, %2").arg(QString::number(mSpeed), dropped));
}

} // namespace corvane::desktop
