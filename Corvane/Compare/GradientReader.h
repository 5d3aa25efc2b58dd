#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "FrameReading.h"
#include "PictureRows.h"

namespace corvane {

/// The rows that one frame of a clip should show, in code values of the video: `row[y]` holds the planes Y',
/// Cb, Cr or R', G', B' of row y of the picture; chroma planes are spread to all rows.
struct ExpectedRows {
    std::int64_t frame = 0;
    std::vector<std::array<float, 3>> row;
};

/// Tells by the colors of a gradient, which move steadily over a clip, which frame a picture shows. Colors
/// may have gone through one map that is the same for all of the video (a mistaken matrix, a mistaken range,
/// channels exchanged): it is learned from the first pictures. One thread at a time.
class GradientReader {
  public:
    /// `keys` are frames of the clip in order, at least the first and the last one; between them colors are
    /// taken to move in straight lines. All have as many rows as the pictures. `bits` are those of a sample.
    /// Throws `std::bad_alloc`.
    GradientReader(std::vector<ExpectedRows> keys, int bits);

    /// By how many frames a picture can be told from its neighbors at best: 1 is each frame, 10 every tenth.
    /// None if colors don't move at all.
    std::optional<double> Resolution() const { return mResolution; }

    /// Notes the frame that a picture shows in `frame`, `certainty` and `margin` of its reading; none if its
    /// colors are none of the clip's. Throws `std::bad_alloc`.
    void Read(const PictureRows& rows, FrameReading& reading);

    /// Whether colors went through a map, so that frames are told by colors that are not the expected ones.
    bool ColorsAreMapped() const { return mMap.has_value(); }

  private:
    using Color = std::array<float, 3>;
    /// color -> matrix * color + offset
    struct ColorMap {
        std::array<Color, 3> matrix;
        Color offset;
        Color operator()(const Color& color) const;
    };
    struct Fit {
        double frame = 0;
        double error = 0;  // root mean square over rows and planes, in code values
        double motion = 0; // what a frame changes, likewise
    };

    void Sample(const PictureRows& rows);
    Fit FitFrame(const std::optional<ColorMap>& map) const;
    Fit FitBetween(const std::vector<Color>& from, const std::vector<Color>& to, std::int64_t first,
                   std::int64_t last) const;
    bool Learn(std::int64_t picture);
    std::vector<std::vector<Color>> Mapped(const ColorMap& map) const;

    std::vector<std::int64_t> mFrames;       // of the keys
    std::vector<std::vector<Color>> mKeys;   // some rows of each key
    std::vector<std::vector<Color>> mMapped; // the same, as they come out of the map
    std::vector<std::size_t> mRows;          // which rows these are
    std::vector<Color> mSeen;                // the same rows of the picture
    std::optional<ColorMap> mMap;
    std::optional<double> mResolution;
    double mStep; // one step of 8 bits, in code values
};

} // namespace corvane
