#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "Export/Picture/RowScan.h"
#include "Video.h"

namespace corvane {

/// The samples of some columns of one row of a plane, in code values of the picture.
struct RowSamples {
    float mean = 0;
    std::uint16_t least = 0;
    std::uint16_t most = 0;
    float variance = 0; ///< mean of the squares of what samples are off the mean; 0 if they are alike
};

/// The samples of every row of each plane. Generated frames are rows of one color with at most a number on
/// them, so that this is nearly all that there is to know of a picture.
struct PictureRows {
    PlanarFormat format;
    std::array<std::vector<RowSamples>, 4> plane;
    std::array<std::uint32_t, 4> columns{}; ///< how many samples of each row of a plane were measured
};

/// Measures the rows of a picture in the columns from `left` to `right` (pixels; the right one is outside,
/// and there is at least one in every plane). `rows` is used again, so that steady use allocates nothing.
/// Throws `std::bad_alloc`. Any thread.
void MeasureRows(const VideoPicture& picture, std::uint32_t left, std::uint32_t right, PictureRows& rows);

} // namespace corvane
