#pragma once

#include <cstdint>

#include "Engine/Clip.h"

namespace corvane {

/// Color description as the code points of ITU-T H.273, which containers, codecs and zimg all use.
struct ColorTags {
    int matrix = 1;
    int primaries = 1;
    int transfer = 1;
};

/// Code points of H.273 that a clip can need.
inline constexpr int kH273_709 = 1;
inline constexpr int kH273_625 = 5;
inline constexpr int kH273_525 = 6;

/// What every target needs to know of the frames that will come: their format as files can tell it. The rate
/// and the pixel aspect are in lowest terms of 31 bits. Neither Y4M nor libav has a tag for interlaced frames
/// in an unknown order: they are tagged as upper field first.
struct StreamFacts : ClipFormat {
    ColorTags tags;
    std::int64_t frames = 0; ///< how many will come

    bool IsFloat() const { return (raster & kRK_Float) != 0; }
    bool IsYCbCr() const { return (raster & kRK_YCbCr) != 0; }
    /// Whether the fourth component means something.
    bool HasAlpha() const { return (raster & kRK_AlphaIgnored) == 0; }
};

/// Gathers the facts of `frames` frames of a clip that can be rendered. Any thread.
StreamFacts FactsOf(const Clip& clip, std::int64_t frames);

/// How Y'CbCr made from a picture of this size is to be described. Pictures of more than 576 rows are HD:
/// BT.709. Smaller ones are 625-line (BT.601 with the primaries of BT.470 B/G) or 525-line (SMPTE 170M), told
/// apart by the number of rows and, for other sizes, by a rate of 25 times a power of two. A Y'CbCr raster
/// format keeps its matrix. Any thread.
ColorTags TagsFor(const ClipFormat& format);

} // namespace corvane
