#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace corvane::desktop {

/// Nanoseconds since some fixed moment; never goes back.
using PlaybackClock = std::function<std::int64_t()>;

/// The machine's monotonic clock. Any thread.
std::int64_t MonotonicNanoseconds();

/// Chooses the frame that is due by a clock, at the exact rate, and counts those that were never seen.
///
/// While it runs, frames are counted in steps: step 0 is the frame at which it started, and in a loop the
/// count goes on past the clip's end. UI thread only.
class Playback {
  public:
    explicit Playback(PlaybackClock clock);

    void SetClock(PlaybackClock clock) { mClock = std::move(clock); }

    /// Starts at `frame` of a clip of `frames` frames, each `ticksPerFrame` long; both of these are above 0.
    /// `speed`, which is not 0, is how many frames on a step goes; backwards if it is below 0. The count of
    /// dropped frames starts over.
    void Start(std::int64_t frame, std::int64_t frames, std::int64_t ticksPerFrame, bool loop, int speed = 1);
    void Stop() { mRunning = false; }
    bool IsRunning() const { return mRunning; }
    /// Goes on from the frame that is due now, either in a loop or up to the end. The count of dropped frames
    /// stays.
    void SetLoop(bool loop);

    /// The step that is due now; without a loop, at most that of the last frame in this direction.
    std::int64_t DueStep() const;
    /// Whether the last frame has had its time. Never so in a loop.
    bool IsOver() const;
    /// The frame of a step: held to the clip.
    std::int64_t FrameOf(std::int64_t step) const;
    /// How long it is until `step` is due; 0 if it is due already.
    std::int64_t NanosecondsUntil(std::int64_t step) const;

    /// Says that the frame of a step is on the screen: the steps left out since the last one were dropped.
    void Shown(std::int64_t step);
    std::int64_t GetDropped() const { return mDropped; }

  private:
    std::int64_t StepNow() const;
    std::int64_t LastStep() const;                     // without a loop
    std::int64_t BeginningOf(std::int64_t step) const; // nanoseconds from the start, rounded up

    PlaybackClock mClock;
    bool mRunning = false;
    bool mLoop = false;
    int mSpeed = 1;
    std::int64_t mStart = 0; // nanoseconds
    std::int64_t mFirst = 0;
    std::int64_t mFrames = 1;
    std::int64_t mTicksPerFrame = 1;
    std::int64_t mShown = 0;
    std::int64_t mDropped = 0;
};

} // namespace corvane::desktop
