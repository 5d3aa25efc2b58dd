#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "ColorSpace.h"
#include "FrameReading.h"
#include "PictureRows.h"

namespace corvane {

/// What the rows of each plane should be in one frame of a clip, in code values of the video: planes Y', Cb,
/// Cr or R', G', B'; a fourth is not looked at.
struct KeyFrame {
    std::int64_t frame = 0;
    std::array<std::vector<std::uint16_t>, 4> rows;
    std::vector<Color> colors; ///< of the clip's rows, for changes that are tried; may be empty
};

/// What is tried when colors are none of the clip's.
struct ColorChanges {
    SampleCoding coding; ///< how viewers take the video's samples
    std::vector<std::function<Color(const Color&)>> changes;
};

/// Tells by the colors of a gradient, which move steadily over a clip, which frame a picture shows. Pictures
/// may be upside down, and something known may have changed all colors: the first few pictures that are not
/// as they should be decide what it was. If nothing known explains them, one linear map of colors may: it is
/// learned from the first pictures, which are taken for the first frames then. One thread at a time.
class GradientReader {
  public:
    /// `keys` are two frames of the clip or more, in order, with the first and the last one; between them
    /// colors are taken to move in straight lines. `bits` are those of a sample of the video. Throws
    /// `std::bad_alloc`.
    GradientReader(const std::vector<KeyFrame>& keys, int bits, ColorChanges changes = {});

    /// How many frames it takes for colors to move by half a step of 8 bits, at least 1; none if they don't
    /// move at all.
    std::optional<double> Resolution() const;

    /// Notes the frame that a picture shows in `frame`, `certainty` and `margin` of its reading; none if its
    /// colors are none of the clip's. `rows` hold as many planes as the keys, in any number of rows, from the
    /// top of the picture to its bottom. Throws `std::bad_alloc`.
    void Read(const PictureRows& rows, FrameReading& reading);

    /// Whether pictures show frames upside down.
    bool IsFlipped() const { return mIsFlipped; }

  private:
    using Triple = std::array<double, 3>;
    using Rows = std::vector<Triple>; // some rows of a picture
    struct Key {
        std::int64_t frame;
        Rows rows;
    };
    // What may have happened to pictures, and how far the last few are from it.
    struct Guess {
        std::vector<Key> keys;
        bool flipped = false;
        double squares = 0;
    };
    struct Fit {
        double frame = 0;
        double error = 0;  // root mean square over rows and planes, in steps of 8 bits
        double motion = 0; // what changes from frame to frame, likewise
    };
    // Sums for colors that go through a map: of expected ones (and 1) with each other, and with those seen.
    struct Normal {
        std::array<std::array<double, 4>, 4> expected{};
        std::array<std::array<double, 3>, 4> seen{};
        double squares = 0;
        double count = 0;
    };

    static Fit FitFrame(const std::vector<Key>& keys, const Rows& seen);
    Rows Expected(double frame) const;
    void MakeGuesses();
    bool TakesGuess(const Rows& seen);
    void Learn(const Rows& seen);
    void MapKeys();

    std::vector<Key> mKeys;
    std::vector<std::vector<Color>> mColors; // of the keys' rows
    ColorChanges mChanges;
    std::vector<Guess> mGuesses; // while none is taken
    std::int64_t mGuessed = 0;   // pictures
    bool mIsFlipped = false;
    const double mStep; // of 8 bits, in code values
    Normal mNormal;
    std::int64_t mLearned = 0; // pictures
    double mUsualError = 0;
    bool mIsSure = false; // a picture was told by the keys
    bool mIsMapped = false;
};

} // namespace corvane
