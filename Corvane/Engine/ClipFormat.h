#pragma once

#include <cstdint>
#include <string>

#include "Rasterkit.h"

namespace corvane {

/// The size of a frame.
struct Size {
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0; ///< rows

    bool operator==(const Size&) const = default;
};

/// The shape of a pixel, its width over its height, in the terms in which it was told. There is no such ratio
/// if a term is 0; pictures are made as of square pixels then.
struct PixelAspect {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;

    bool operator==(const PixelAspect&) const = default;
};

/// The same ratio in lowest terms of 31 bits, which is what files and pictures can hold; only absurd ratios
/// are rounded. 1:1 if a term is 0. Any thread.
PixelAspect Reduced(PixelAspect aspect);

/// `scale / sampleSize` frames per second. Both terms are 0 if there is no rate.
struct Rate {
    std::uint32_t scale = 0;
    std::uint32_t sampleSize = 0;

    bool operator==(const Rate&) const = default;
};

/// The same rate in lowest terms of 31 bits, as for a pixel aspect; none if there is none. Any thread.
Rate Reduced(Rate rate);

/// Which field of an interlaced frame comes first. In every order the upper field is the even rows.
enum class FieldOrder : std::uint8_t {
    kProgressive, ///< there are no fields
    kUpperFirst,
    kLowerFirst,
    kUnknown ///< interlaced, but nobody says which field comes first
};

/// The order that a clip's field type (`lummediatypes::FieldType`) means: every value but 0 is interlaced.
FieldOrder FieldOrderOf(std::int32_t fieldType);

/// The concrete format in which frames arrive (`Rasterkit.h`); 0 if none can be made.
using RasterFormat = RK_PixelFormat;

/// What the frames of a clip, or of a sequence, are. A value type for any thread.
struct ClipFormat {
    Size size{};
    PixelAspect aspect{};
    Rate rate{};
    FieldOrder order = FieldOrder::kProgressive;
    RasterFormat raster = 0; ///< 0 for a sequence, too: it has no frames of its own

    bool Interlaced() const { return order != FieldOrder::kProgressive; }
    /// Without padding; 0 if no frame can be made.
    std::uint64_t BytesPerFrame() const;

    bool operator==(const ClipFormat&) const = default;
};

/// Says why the host makes no frames of that size and raster format, as a clause; empty if it does. The
/// raster format is not 0. Any thread.
std::string WhyNoFrame(const ClipFormat& format);

} // namespace corvane
