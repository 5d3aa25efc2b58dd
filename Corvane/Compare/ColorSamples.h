#pragma once

#include <cstdint>
#include <vector>

#include "ColorSpace.h"

namespace corvane {

/// Which rows of a picture a sample is of.
enum class Parity : std::uint8_t { kEven, kOdd, kBoth };

/// One row of one picture, or some that belong together.
struct ColorSample {
    std::int64_t frame = 0; ///< of the clip
    double place = 0;       ///< of the row in the frame, from 0 at the top to 1 at the bottom
    Parity parity = Parity::kEven;
    Color expected{}; ///< the color that the clip has there: of the upper field, if rows mix both
    Color other{};    ///< the color of the other field, if both have one; else the same
    double ownLuma =
        1; ///< how much of the expected color the rows' luma, or R'G'B', shows; the rest is the other's
    double ownChroma = 1;
    Codes found{};       ///< means over the row, in steps of 8 bits: code values over 2^(bits - 8)
    SampleCoding coding; ///< how a viewer takes the samples; always 8 bits, as they are given here
    bool alpha = false;  ///< whether the fourth component means something
};

/// Samples from the first picture to the last, evenly: when there are too many, every other picture's are
/// dropped, and from then on every other picture isn't taken. One thread at a time.
class ColorSamples {
  public:
    /// Whether samples of the next picture are wanted; called once a picture.
    bool WantsNext();
    /// Adds one of that picture's samples. Throws `std::bad_alloc`.
    void Add(const ColorSample& sample);

    const std::vector<ColorSample>& Get() const { return mSamples; }

  private:
    void Thin();

    static constexpr std::size_t kMost = 6144;
    std::vector<ColorSample> mSamples;
    std::vector<std::int64_t> mPicture; // which each sample is of, counted from 0
    std::int64_t mNext = 0;
    std::int64_t mStep = 1;
};

} // namespace corvane
