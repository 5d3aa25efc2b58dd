#include "Playback.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <utility>

#include "lummediatypes.h"

namespace corvane::desktop {

namespace {

using WideTime = __int128;

constexpr WideTime kNanoseconds = 1000000000;
constexpr WideTime kMost = std::numeric_limits<std::int64_t>::max();

} // namespace

std::int64_t MonotonicNanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

Playback::Playback(PlaybackClock clock) : mClock(std::move(clock)) {}

void Playback::Start(std::int64_t frame, std::int64_t frames, std::int64_t ticksPerFrame, bool loop,
                     int speed) {
    mFirst = frame;
    mFrames = frames;
    mTicksPerFrame = ticksPerFrame;
    mLoop = loop;
    mSpeed = speed;
    mStart = mClock();
    mShown = 0;
    mDropped = 0;
    mRunning = true;
}

void Playback::SetLoop(bool loop) {
    if (mRunning) {
        // The step that is due becomes step 0, with its own beginning: the time keeps its phase.
        const std::int64_t step = DueStep();
        mFirst = FrameOf(step);
        mStart += BeginningOf(step);
        mShown -= step;
    }
    mLoop = loop;
}

std::int64_t Playback::StepNow() const {
    const WideTime elapsed = std::max<std::int64_t>(mClock() - mStart, 0);
    const WideTime step = elapsed * lummediatypes::kTicksPerSecond / (kNanoseconds * mTicksPerFrame);
    return static_cast<std::int64_t>(std::min(step, kMost / 2));
}

std::int64_t Playback::LastStep() const {
    const std::int64_t ahead = mSpeed > 0 ? mFrames - 1 - mFirst : mFirst, stride = std::abs(mSpeed);
    return ahead / stride + (ahead % stride != 0);
}

std::int64_t Playback::DueStep() const {
    return mLoop ? StepNow() : std::min(StepNow(), LastStep());
}

bool Playback::IsOver() const {
    return !mLoop && StepNow() > LastStep();
}

std::int64_t Playback::FrameOf(std::int64_t step) const {
    const WideTime frame = mFirst + WideTime{step} * mSpeed;
    if (!mLoop) return static_cast<std::int64_t>(std::clamp<WideTime>(frame, 0, mFrames - 1));
    return static_cast<std::int64_t>((frame % mFrames + mFrames) % mFrames);
}

std::int64_t Playback::BeginningOf(std::int64_t step) const {
    const WideTime ticks = WideTime{step} * mTicksPerFrame;
    const WideTime due =
        (ticks * kNanoseconds + lummediatypes::kTicksPerSecond - 1) / lummediatypes::kTicksPerSecond;
    return static_cast<std::int64_t>(std::min(due, kMost / 2));
}

std::int64_t Playback::NanosecondsUntil(std::int64_t step) const {
    return std::max<std::int64_t>(mStart + BeginningOf(step) - mClock(), 0);
}

void Playback::Shown(std::int64_t step) {
    if (step <= mShown) return;
    mDropped += step - mShown - 1;
    mShown = step;
}

} // namespace corvane::desktop
