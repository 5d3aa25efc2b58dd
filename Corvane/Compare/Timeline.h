#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Finding.h"
#include "FrameReading.h"
#include "Video.h"

namespace corvane {

/// What a timeline is held against.
struct TimelineFacts {
    FrameRange frames;              ///< of the clip, which the video should show
    std::int64_t clipFrames = 0;    ///< how many the clip has
    std::int64_t ticksPerFrame = 0; ///< the clip's, exact, above 0
    bool framesDiffer = true;       ///< whether a picture tells which frame it shows
    VideoFacts video;
};

/// Follows which frames are shown, and when. Memory grows with what is wrong, and by a bit per frame. One
/// thread at a time.
class Timeline {
  public:
    /// Throws `std::bad_alloc`.
    explicit Timeline(const TimelineFacts& facts);
    ~Timeline();

    /// Takes the next picture. Throws `std::bad_alloc`.
    void Add(const FrameReading& reading);

    /// The frame that the last picture that was added shows; none if it can't be told. Unlike the reading it
    /// is whole, and is filled in by the pictures before if the picture itself can't be read beyond doubt.
    std::optional<std::int64_t> Frame() const;

    /// The frame that the last picture would show if all went on from the last picture whose frame is known,
    /// or from the first one: by their times, or else by their order. None if the clip has no such frame.
    std::optional<std::int64_t> LikelyFrame() const;

    /// How many pictures show a frame of the clip.
    std::int64_t Matched() const;

    /// frames.missing, repeated, order and foreign, time.rate, jitter and duration. `complete` is false if
    /// the video was not read to its end. Throws `std::bad_alloc`.
    std::vector<Finding> Findings(bool complete) const;

    /// What could not be told, and why. Throws `std::bad_alloc`.
    std::vector<std::string> Remarks() const;

  private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace corvane
