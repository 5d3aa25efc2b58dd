#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "FrameReading.h"
#include "GradientKeys.h"
#include "GradientSearch.h"
#include "PictureRows.h"

namespace corvane {

/// Tells by the colors of a gradient, which move steadily over a clip, which frame a picture shows. Pictures
/// may be upside down, lines may be missing, moved or scaled, and something known may have changed all
/// colors: the first few pictures that are not as they should be decide what it was. If nothing known
/// explains them, one linear map of colors may: it is learned from the first pictures, which are taken for
/// the first frames then. One thread at a time.
class GradientReader {
  public:
    /// `keys` are two frames of the clip or more, in order, with the first and the last one; between them
    /// colors are taken to move in straight lines. `bits` are those of a sample of the video, `coding` is how
    /// viewers take its samples. Throws `std::bad_alloc`.
    GradientReader(std::vector<KeyFrame> keys, int bits, const SampleCoding& coding,
                   GradientChanges changes = {});

    /// How many frames it takes for colors to move by half a step of 8 bits, at least 1; none if they don't
    /// move at all.
    std::optional<double> Resolution() const { return mResolution; }

    /// Notes the frame that a picture shows in `frame`, `certainty` and `margin` of its reading; none if its
    /// colors are none of the clip's: then it is `miscolored`, or `foreign` if it is no gradient at all.
    /// `rows` hold as many planes as the keys: what shows the clip rather than bars, from row `top` of the
    /// picture on. Throws `std::bad_alloc`.
    void Read(const PictureRows& rows, std::uint32_t top, FrameReading& reading);

    /// Whether pictures show frames upside down.
    bool IsFlipped() const { return mGuess.flipped; }
    /// Where the rows of frames lie in pictures, if that was measured.
    const std::optional<RowAxis>& Axis() const { return mAxis; }

  private:
    // Sums for colors that go through a map: of expected ones (and 1) with each other, and with those seen.
    struct Normal {
        std::array<std::array<double, 4>, 4> expected{};
        std::array<std::array<double, 3>, 4> seen{};
        double squares = 0;
        double count = 0;
    };

    void Place(const RowRange& range);
    void Take(const GradientGuess& guess);
    bool LooksForAxis(const GradientRows& seen);
    std::optional<GradientGuess> Guess(const GradientRows& seen, Care care);
    bool TakesGuess(const GradientRows& seen);
    GradientFit FitOther(const GradientRows& seen);
    bool IsForeign(double texture, const GradientRows& seen) const;
    GradientRows Expected(double frame) const;
    double MarginOf(const GradientFit& fit) const;
    void Learn(const GradientRows& seen);
    void MapKeys();

    const GradientSearch mSearch;
    const double mStep; // of 8 bits, in code values
    std::optional<double> mResolution;
    double mContrast = 0; // the least of all frames, from top to bottom
    RowRange mRange;      // of the last picture
    GradientGuess mGuess; // what happened to frames
    std::optional<RowAxis> mAxis;
    std::vector<GradientKey> mKeys;      // as they are in the range if that happened
    std::vector<GradientKey> mOtherKeys; // likewise, of pictures whose colors are others; empty if none are
    std::vector<GradientRows> mShaped;   // pictures of another height, while it isn't clear why
    std::vector<GradientRows> mUnexplained; // pictures that nothing explains yet
    std::int64_t mGuessed = 0;              // pictures
    Normal mNormal;
    std::int64_t mLearned = 0; // pictures
    double mUsualError = 0;
    double mUsualTexture = 0;
    bool mIsSure = false; // a picture was told by the keys
    bool mIsMapped = false;
};

} // namespace corvane
