#pragma once

#include <cstdint>

#include "Engine/Clip.h"

namespace corvane {

enum class FieldOrder : std::uint8_t { kProgressive, kUpperFirst, kLowerFirst };

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

/// A positive ratio in lowest terms.
struct Ratio {
    std::int32_t numerator = 1;
    std::int32_t denominator = 1;
};

/// What every target needs to know of the frames that will come.
struct StreamFacts {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    RK_PixelFormat format = 0; ///< as delivered; concrete
    FieldOrder order = FieldOrder::kProgressive;
    Ratio rate;   ///< frames per second
    Ratio aspect; ///< of one pixel, width to height
    ColorTags tags;
    std::int64_t frames = 0; ///< how many will come

    bool Interlaced() const { return order != FieldOrder::kProgressive; }
    bool IsFloat() const { return (format & kRK_Float) != 0; }
    bool IsYCbCr() const { return (format & kRK_YCbCr) != 0; }
    /// Whether the fourth component means something.
    bool HasAlpha() const { return (format & kRK_AlphaIgnored) == 0; }
    std::uint64_t BytesPerFrame() const;
};

/// Gathers the facts of `frames` frames of a clip that can be rendered.
StreamFacts FactsOf(const Clip& clip, std::int64_t frames);

/// How Y'CbCr made from a picture of this size is to be described. Pictures of more than 576 rows are HD:
/// BT.709. Smaller ones are 625-line (BT.601 with the primaries of BT.470 B/G) or 525-line (SMPTE 170M), told
/// apart by the number of rows and, for other sizes, by a rate of 25 times a power of two. A Y'CbCr `format`
/// keeps its matrix.
ColorTags TagsFor(std::uint32_t height, Ratio rate, RK_PixelFormat format);

} // namespace corvane
