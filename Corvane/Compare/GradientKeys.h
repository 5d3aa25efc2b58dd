#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "ColorSpace.h"
#include "PictureRows.h"

namespace corvane {

/// What the rows of each plane should be in one frame of a clip, in code values of the video: planes Y', Cb,
/// Cr or R', G', B'; a fourth is not looked at.
struct KeyFrame {
    std::int64_t frame = 0;
    std::array<std::vector<std::uint16_t>, 4> rows;
    std::vector<Color> colors; ///< of the clip's rows, for changes that are tried; may be empty
};

/// Where the rows of a frame lie in a picture: the upper edge of its row y lies at `start + y * scale`.
struct RowAxis {
    double start = 0;
    double scale = 1;

    bool operator==(const RowAxis&) const = default;
};

/// The rows of a picture that show the clip.
struct RowRange {
    std::uint32_t top = 0;
    std::uint32_t height = 0;

    bool operator==(const RowRange&) const = default;
};

/// What may have happened to a gradient.
struct GradientGuess {
    RowAxis axis;
    bool flipped = false;                        ///< top and bottom exchanged, within the axis
    std::function<Color(const Color&)> change{}; ///< of colors; none if empty
};

/// Some rows of a picture, from its top to its bottom: their planes, in steps of 8 bits.
using GradientRows = std::vector<std::array<double, 3>>;

/// Some rows of a picture that shows a certain frame.
struct GradientKey {
    std::int64_t frame = 0;
    GradientRows rows;
};

/// Some frames of a gradient, from which the colors of any other one follow. Any thread.
class GradientKeys {
  public:
    /// How many rows of a picture are looked at.
    static constexpr std::size_t kRows = 24;

    /// `keys` are two frames of the clip or more, in order; between them colors are taken to move in straight
    /// lines. `coding` is how viewers take the video's samples. Throws `std::bad_alloc`.
    GradientKeys(std::vector<KeyFrame> keys, int bits, const SampleCoding& coding);

    /// How many rows a frame has.
    std::size_t Height() const { return mKeys.front().rows[0].size(); }
    /// Whether the colors of frames are known, so that changes of them can be tried.
    bool HasColors() const { return mHasColors; }
    /// What the keys' rows are in those of a picture if that happened to them. Throws `std::bad_alloc`.
    std::vector<GradientKey> In(const RowRange& rows, const GradientGuess& guess) const;
    /// The rows of a picture that correspond to those. Throws `std::bad_alloc`.
    GradientRows Seen(const PictureRows& rows) const;

  private:
    double PlaceOf(std::size_t i, bool halved, const RowRange& rows, const GradientGuess& guess) const;
    std::array<double, 3> Changed(const KeyFrame& key, double at,
                                  const std::function<Color(const Color&)>& change) const;

    std::vector<KeyFrame> mKeys;
    const double mStep; // of 8 bits, in code values
    SampleCoding mCoding;
    bool mHasColors = true;
};

/// The frame that some rows show.
struct GradientFit {
    double frame = 0;
    double error = 0;  ///< root mean square over rows and planes, in steps of 8 bits
    double motion = 0; ///< what changes from frame to frame, likewise
};

/// The place on the way from key to key that is nearest to the colors seen. Any thread.
GradientFit FitFrame(const std::vector<GradientKey>& keys, const GradientRows& seen);

} // namespace corvane
