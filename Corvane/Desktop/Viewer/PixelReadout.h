#pragma once

#include <cstdint>
#include <string>

#include "Engine/Clip.h"

namespace corvane::desktop {

/// One pixel of a frame in words.
struct PixelWords {
    /// The components as delivered, in their order in memory: "B 26 G 128 R 200 A 255".
    std::string delivered;
    /// The delivered format's name and four characters: "BGRA_4444_8u (bgra)".
    std::string format;
    /// As 8-bit R'G'B': "200 128 26".
    std::string rgb;
};

/// Reads the pixel at column `x` of row `y`, which must be inside, of a frame of `clip`. Floats have as many
/// digits as tell them apart from all others. Throws `Failure` if the color can't be converted. Any thread.
PixelWords DescribePixel(const Clip& clip, const Frame& frame, std::uint32_t x, std::uint32_t y);

} // namespace corvane::desktop
