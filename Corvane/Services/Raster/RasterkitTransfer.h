/// From gamma-coded values to linear light. Private to the raster service.
#pragma once

namespace corvane::raster {

/// The inverse of the transfer characteristic of BT.709-6, item 1.2; values below black go on along its
/// linear part. `value` is no NaN. The result is the same on every machine, exact to the last place of a
/// float. Any thread.
double LinearLight(double value);

} // namespace corvane::raster
