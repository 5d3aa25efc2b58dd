#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ExpectedRows.h"
#include "FieldCadence.h"
#include "Finding.h"
#include "FrameReading.h"
#include "PictureRows.h"
#include "Placement.h"

namespace corvane {

/// How much of the upper field's color the even (0) and the odd (1) rows show: 1 and 0 if nothing was done to
/// the fields.
struct FieldShares {
    std::array<double, 2> luma{1, 0};
    std::array<double, 2> chroma{1, 0};
};

/// Looks at what happened to the fields of a clip. What is kept doesn't grow with the number of pictures. One
/// thread at a time.
class FieldAnalysis {
  public:
    FieldAnalysis(const StreamFacts& clip, const VideoFacts& video);

    /// Takes note of a picture, in the order in which they are shown. `expected` are the rows of the frame
    /// that it shows. Foreign and damaged pictures are to be left out. Throws `std::bad_alloc`.
    void Add(const PictureRows& rows, const FrameReading& reading, FieldOrder order,
             const Placement& placement, const ExpectedRows& expected);

    /// What was done: kinds fields.* and tags.order. Throws `std::bad_alloc`.
    std::vector<Finding> Findings() const;

    /// What rows show in most pictures, for those who compare colors.
    FieldShares Shares() const;

  private:
    /// What the rows of a picture show.
    enum class Look { kClear, kSwapped, kUpperOnly, kLowerOnly, kBlended, kUnclear };
    static constexpr std::size_t kLooks = 6;
    struct Seen {
        std::int64_t pictures = 0;
        FrameRanges frames;
    };

    bool FieldsDiffer(const ExpectedRows& expected) const;
    Look LookOf(const std::array<double, 2>& shares) const;
    void AddLook(const FieldShares& shares, const FrameReading& reading, const PictureRows& rows);
    void AddNumbers(const FrameReading& reading, FieldOrder order);
    bool AddContentFindings(std::vector<Finding>& findings) const;
    void AddOrderOfTime(std::vector<Finding>& findings) const;
    void AddTag(std::vector<Finding>& findings) const;

    const StreamFacts mClip;
    const VideoFacts mVideo;
    bool mScaled = false;
    std::int64_t mPictures = 0;
    std::int64_t mLooked = 0; // pictures whose fields' colors could be told apart
    std::array<Seen, kLooks> mSeen;
    std::int64_t mAlternations = 0; // between one field and the other, picture by picture
    Look mLast = Look::kUnclear;
    std::int64_t mShifted = 0; // swapped ones whose first or last row shows a shift
    std::array<std::array<double, 2>, 2> mShareSum{};
    Seen mChromaMixed;
    Seen mEarlier, mLater; // the odd rows show a frame before or after that of the even rows
    std::array<std::int64_t, 4> mTold{};
    FieldCadence mCadence;
};

} // namespace corvane
