#pragma once

#include <cstdint>
#include <string>

#include "Engine/Clip.h"

namespace corvane::desktop {

/// One pixel of a frame in words.
struct PixelWords {
    std::string
        delivered;      ///< the components as delivered, in their order in memory: "B 26 G 128 R 200 A 255"
    std::string format; ///< the delivered format's name and four characters: "BGRA_4444_8u (bgra)"
    std::string rgb;    ///< as 8-bit R'G'B': "200 128 26"
};

/// Reads column `x`, row `y` of a frame of `clip`; both are inside of it. Floats have as many digits as tell
/// them apart from all others. Any thread.
PixelWords DescribePixel(const Clip& clip, const Frame& frame, std::uint32_t x, std::uint32_t y);

} // namespace corvane::desktop
