#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "ExpectedFrames.h"
#include "PictureRows.h"
#include "Video.h"

namespace corvane {

/// How near the pictures that show a frame of the clip come to it, by plane: Y', Cb, Cr, A or R', G', B', A.
struct PlaneErrors {
    bool measured = false;      ///< whether there is such a plane and any picture could be compared
    std::optional<double> psnr; ///< dB; none if nothing differs
    std::uint32_t largest = 0;  ///< in code values of the video
};

/// Sums up how far samples are off. One thread at a time.
class PictureErrors {
  public:
    /// Adds the measured columns of a picture, whose rows should be `codes`; of planes in which something is
    /// expected, and of the first `definedRows` rows of the picture.
    void AddRows(const PictureRows& rows, const RowCodes& codes, std::uint32_t definedRows);
    /// Adds the pixels in the columns before `right` of a picture that should be `expected`.
    void AddPixels(const VideoPicture& picture, const PlanarPicture& expected, bool alpha,
                   std::uint32_t right, std::uint32_t definedRows);
    /// Adds what another one has summed up.
    void Add(const PictureErrors& other);

    /// Of all that was added.
    std::array<PlaneErrors, 4> Get() const;
    /// Mean square of all planes' errors, as shares of the largest code value.
    double MeanSquare() const;

  private:
    struct Plane {
        double squares = 0; // shares of the largest code value
        double samples = 0;
        std::uint32_t largest = 0;
    };
    std::array<Plane, 4> mPlanes;
};

} // namespace corvane
