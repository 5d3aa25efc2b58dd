/// The color conversion of the raster service: one color to the bytes of one pixel. Private to the service.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Rasterkit.h"

namespace corvane::raster {

/// The bytes of one pixel, repeated to fill 16: four 8-bit pixels alike, or one float pixel. A vector of the
/// compiler's, so that it travels in a register.
using Pattern [[gnu::vector_size(16)]] = std::uint32_t;

/// Bytes of one pixel of a concrete format.
constexpr std::uint32_t PixelBytes(RK_PixelFormat format) {
    return format & kRK_Float ? 16 : 4;
}

/// Throws `std::invalid_argument` unless `format` is one of the 30 concrete formats.
void RequireConcrete(RK_PixelFormat format);

/// Converts a color (B, G, R, A floats) as `RK_FillWithColor` documents. `format` must be concrete.
Pattern ConvertColor(const float* bgra, RK_PixelFormat format);

} // namespace corvane::raster
