#pragma once

#include <array>
#include <cstdint>

#include "PictureRows.h"
#include "Placement.h"

namespace corvane {

/// Learns what the rows of a clip's two fields look like in a video, to tell pictures of something else. As
/// it learns from the video, colors that were changed all along don't matter. One thread at a time.
class FieldColors {
  public:
    /// Takes the rows, beside the number, of a picture that is one of the clip's beyond doubt.
    void Learn(const PictureRows& rows, const Placement& placement);

    /// Whether rows can't be the clip's: they are not of one color each, or of colors that are no mixture of
    /// both fields'. False until something was learned.
    bool AreOthers(const PictureRows& rows, const Placement& placement) const;

  private:
    /// Of even and of odd rows, plane by plane, in steps of 8 bits.
    using Means = std::array<std::array<double, 3>, 2>;
    struct Look {
        Means mean{};
        double variance = 0; // of luma or green within rows
    };

    static Look LookOf(const PictureRows& rows, const Placement& placement);

    std::int64_t mPictures = 0;
    Look mSums;
};

} // namespace corvane
