#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Finding.h"
#include "FrameReading.h"
#include "FrameSet.h"

namespace corvane {

/// The cause that findings of the kind frames.repeated have if there are two pictures of each frame.
inline constexpr const char* kEachFrameTwice = "every frame is shown twice";

/// Which frames are shown, in which order. One thread at a time; all of it throws `std::bad_alloc`.
class FrameSequence {
  public:
    /// Of a clip of `clipFrames` frames, of which `expected` should be shown.
    FrameSequence(const FrameRange& expected, std::int64_t clipFrames);

    /// Takes the next picture, and returns by how many frames the clip went on; none if that can't be told.
    std::optional<std::int64_t> Add(const FrameReading& reading);

    /// The frame that the last picture shows, as far as it is known.
    std::optional<std::int64_t> Frame() const { return mShown; }
    std::int64_t Matched() const { return mMatched; }
    std::int64_t Unread() const { return mUnreadInAll; }
    /// The first and the last frame that are shown; none if there is none.
    std::optional<FrameRange> Extent() const;
    /// Pictures a frame if repeats or gaps are regular, so that they are what is left of another rate.
    std::optional<double> PicturesPerFrame() const;

    /// frames.missing, repeated, order and foreign.
    std::vector<Finding> Findings(bool complete) const;

  private:
    // How regularly something comes back.
    struct Pace {
        std::int64_t last = -1;
        std::int64_t least = 0;
        std::int64_t most = 0;
        std::int64_t count = 0;
        void Note(std::int64_t frame);
        bool IsRegular() const { return count >= 3 && most - least <= 1; }
        /// "one frame in 5", or "one frame in 5 or 6".
        std::string Text() const;
    };

    std::optional<std::int64_t> Whole(const FrameReading& reading) const;
    bool IsForeign(const FrameReading& reading) const;
    void Start(std::int64_t frame);
    void GoOn(std::int64_t frame);
    void GoBack(std::int64_t frame);
    void Repeat(std::int64_t frame);
    void EndRun();
    void Fill(std::int64_t first, std::int64_t count);
    FrameSet Replaced() const;
    std::string RepeatCause() const;
    Finding MissingFinding(const std::vector<FrameRange>& frames, std::string sentence,
                           std::string cause) const;
    void AddCuts(bool complete, std::vector<FrameRange>& within, std::vector<Finding>& findings) const;
    void AddMissing(bool complete, std::vector<Finding>& findings) const;
    void AddRepeated(std::vector<Finding>& findings) const;
    void AddOrder(std::vector<Finding>& findings) const;
    void AddForeign(std::vector<Finding>& findings) const;

    const FrameRange mExpected;
    const std::int64_t mClipFrames;
    std::optional<std::int64_t> mShown; // by the last picture
    std::optional<std::int64_t> mLast;  // by the last picture that shows any
    std::array<std::optional<double>, 2> mLastFields;
    double mMargin = 0; // the largest of all readings
    std::int64_t mMatched = 0;
    std::int64_t mUnread = 0; // pictures since the last one that was read
    std::int64_t mUnreadInAll = 0;
    std::int64_t mForeignRun = 0; // likewise
    std::int64_t mRun = 1;        // pictures that show the last frame
    std::int64_t mForward = 0;    // how often a later frame follows, and an earlier one
    std::int64_t mBackward = 0;
    FrameSet mSeen;
    FrameSet mReplaced; // frames in whose place others were shown
    FrameSet mRepeated;
    FrameSet mAgain; // seen before, and shown again later
    FrameSet mDisordered;
    FrameRanges mForeign;                       // pictures
    std::int64_t mExtra = 0;                    // pictures that repeat
    std::map<std::int64_t, std::int64_t> mRuns; // how many frames were shown so many times in a row
    std::int64_t mRunsInTurn = 0;
    std::int64_t mLastRun = 0;
    Pace mRepeatPace;
    Pace mGapPace;
};

} // namespace corvane
