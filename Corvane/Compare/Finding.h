#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

/// Frames of a clip, or pictures of a video, from `first` to `last`, both counted from 0 and included.
struct FrameRange {
    std::int64_t first = 0;
    std::int64_t last = 0;

    bool operator==(const FrameRange&) const = default;
};

/// Ranges in order that neither touch nor overlap, which frames are added to one by one: what is kept grows
/// with the number of gaps, not of frames. One thread at a time.
class FrameRanges {
  public:
    /// Adds a frame at or after the last one that was added. Throws `std::bad_alloc`.
    void Add(std::int64_t frame);
    const std::vector<FrameRange>& Get() const { return mRanges; }
    /// How many frames there are.
    std::int64_t Count() const { return mCount; }
    bool Empty() const { return mRanges.empty(); }

  private:
    std::vector<FrameRange> mRanges;
    std::int64_t mCount = 0;
};

/// One thing that a pipeline did to a clip.
struct Finding {
    std::string kind;     ///< "frames.missing", "color.matrix" and so on: see Docs/Compare.md
    std::string sentence; ///< for people, with frame numbers and the likely cause, ends with a period
    std::vector<FrameRange> frames; ///< of the clip, if it is about some only; see `CountsPictures`
    std::string expected;           ///< the value that should be, in the words of the sentence; may be empty
    std::string found;              ///< the value that is
    std::string cause;              ///< the likely cause, as a clause; empty if none explains the difference
    double weight = 0;              ///< how bad it is, from 0 to 1: the worst are told first
    /// `expected` and `found` as numbers, for drawings; 0 if they aren't any.
    std::array<double, 2> amounts{};
};

/// Whether `frames` are pictures of the video, because no frames of the clip can stand for them. Any thread.
inline bool CountsPictures(const Finding& finding) {
    return finding.kind == "frames.foreign" || finding.kind == "geometry.size";
}

} // namespace corvane
