/// The color conversion of the raster service: one color to the bytes of one pixel. Private to the service.
#pragma once

#include <cstdint>

#include "Rasterkit.h"

namespace corvane::raster {

/// The bytes of one pixel, repeated to fill 16: four 8-bit pixels alike, or one float pixel. A vector of the
/// compiler's, so that it travels in a register.
using Pattern [[gnu::vector_size(16)]] = std::uint32_t;

/// Converts a color (four floats B, G, R, A) as `RK_FillWithColor` documents. `format` must be concrete. Any
/// thread.
Pattern ConvertColor(const float* bgra, RK_PixelFormat format);

} // namespace corvane::raster
