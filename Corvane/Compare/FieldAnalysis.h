#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "ExpectedRows.h"
#include "FieldCadence.h"
#include "Finding.h"
#include "FrameReading.h"
#include "PictureRows.h"
#include "Placement.h"

namespace corvane {

/// How much of the upper field's color the even (0) and the odd (1) rows of pictures show: 1 and 0 if nothing
/// was done to the fields.
struct FieldShares {
    std::array<double, 2> luma{1, 0};
    std::array<double, 2> chroma{1, 0};
};

/// The cause that findings of the kind fields.dropped have if pictures show one field each, in turn.
inline constexpr const char* kFieldsInTurn = "each field was made a picture of its own";

/// What is known of the fields by the colors: that they are where they should be, or exchanged, though wrong
/// colors made it look different.
enum class FieldsByColor : std::uint8_t { kUnknown, kClear, kSwapped };

/// Looks at what happened to the fields of a clip. What is kept doesn't grow with the number of pictures. One
/// thread at a time.
class FieldAnalysis {
  public:
    FieldAnalysis(const StreamFacts& clip, const VideoFacts& video);

    /// Takes note of a picture, in the order in which they are shown. `expected` are the rows of the frame
    /// that it shows. Foreign and damaged pictures are to be left out. Returns what its rows show, for those
    /// who compare colors. Throws `std::bad_alloc`.
    FieldShares Add(const PictureRows& rows, const FrameReading& reading, FieldOrder order,
                    const Placement& placement, const ExpectedRows& expected);

    /// What was done: kinds fields.* and tags.order, at most one. What is known by the colors counts
    /// rather than what the fields looked like. Throws `std::bad_alloc`.
    std::vector<Finding> Findings(FieldsByColor known = FieldsByColor::kUnknown) const;

  private:
    /// What the rows of a picture show.
    enum class Look : std::uint8_t { kClear, kSwapped, kUpperOnly, kLowerOnly, kBlended, kUnclear };
    static constexpr std::size_t kLooks = 6;
    struct Seen {
        std::int64_t pictures = 0;
        FrameRanges frames; // the first ones
    };
    struct Measured {
        double apart =
            0; // 1 if the fields are as far apart as they should be, 0 if they are alike, -1 if swapped
        double middle = 0; // how much of the upper field both show together
        double aside = 0;  // how far their mean is from any mixture of both, in steps of 8 bits
    };

    static bool IsOneField(Look look) { return look == Look::kUpperOnly || look == Look::kLowerOnly; }
    static std::array<double, 2> SharesOf(const Measured& measured);
    static std::array<double, 2> MixtureOf(const Measured& measured);
    static Look LookOf(const Measured& measured);
    static bool MixesChroma(const Measured& chroma);
    static void Note(Seen& seen, const FrameReading& reading);
    std::optional<Measured> Measure(const PictureRows& rows, const Placement& placement,
                                    const ExpectedRows& expected, bool chroma, double farEnough) const;
    FieldShares AddLooks(const std::optional<Measured>& luma, const std::optional<Measured>& chroma,
                         const FrameReading& reading);
    void AddLook(Look look);
    void AddNumbers(const FrameReading& reading, FieldOrder order);
    Finding SwappedFinding(const Seen& seen) const;
    std::optional<Finding> ContentFinding() const;
    std::optional<Finding> OneFieldFinding() const;
    std::optional<Finding> NumbersFinding() const;
    std::optional<Finding> TagFinding() const;
    std::optional<FieldOrder> Told() const;
    Finding Made(const char* kind, const Seen& seen, const char* found, const char* cause) const;
    const Seen& Of(Look look) const { return mSeen[static_cast<std::size_t>(look)]; }
    bool IsMany(std::int64_t pictures, std::int64_t of) const;

    const StreamFacts mClip;
    const VideoFacts mVideo;
    bool mScaled = false;   // pictures are scaled vertically or turned, so that fields are mixed
    bool mOddShift = false; // the picture lies an odd number of rows off, so that fields change places
    std::int64_t mPictures = 0;
    std::int64_t mLooked = 0; // pictures in which the fields could be told apart
    std::array<Seen, kLooks> mSeen;
    std::int64_t mAlternations = 0; // from one field to the other, picture by picture
    Look mLast = Look::kUnclear;
    std::int64_t mChromaLooked = 0;
    Seen mChromaMixed;
    std::int64_t mNumbered = 0; // pictures in which both fields' frames could be read
    Seen mEarlier, mLater;      // the odd rows show an earlier or a later frame than the even ones
    std::array<std::int64_t, 4> mTold{};
    FieldCadence mCadence;
};

} // namespace corvane
