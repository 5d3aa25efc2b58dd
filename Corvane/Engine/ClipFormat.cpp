#include "ClipFormat.h"

#include <limits>

#include <fmt/format.h>

#include "Frame.h"
#include "Services/Frames/Fraction.h"
#include "Services/Frames/FrameBuffers.h"
#include "lummediatypes.h"

namespace corvane {

namespace {

/// In lowest terms of 31 bits, none of which becomes 0.
Fraction ReducedRatio(std::uint32_t numerator, std::uint32_t denominator) {
    constexpr auto kMaximum = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    const Fraction ratio = NearestFraction({numerator, denominator}, kMaximum);
    return ratio.numerator == 0 ? Fraction{1, kMaximum} : ratio;
}

} // namespace

PixelAspect Reduced(PixelAspect aspect) {
    if (aspect.numerator == 0 || aspect.denominator == 0) return {};
    const auto [numerator, denominator] = ReducedRatio(aspect.numerator, aspect.denominator);
    return {static_cast<std::uint32_t>(numerator), static_cast<std::uint32_t>(denominator)};
}

Rate Reduced(Rate rate) {
    if (rate.scale == 0 || rate.sampleSize == 0) return {};
    const auto [scale, sampleSize] = ReducedRatio(rate.scale, rate.sampleSize);
    return {static_cast<std::uint32_t>(scale), static_cast<std::uint32_t>(sampleSize)};
}

FieldOrder FieldOrderOf(std::int32_t fieldType) {
    switch (fieldType) {
    case lummediatypes::kFieldType_Progressive: return FieldOrder::kProgressive;
    case lummediatypes::kFieldType_UpperFirst: return FieldOrder::kUpperFirst;
    case lummediatypes::kFieldType_LowerFirst: return FieldOrder::kLowerFirst;
    default: return FieldOrder::kUnknown;
    }
}

std::uint64_t ClipFormat::BytesPerFrame() const {
    return raster == 0 ? 0 : std::uint64_t{size.width} * size.height * BytesPerPixel(raster);
}

std::string WhyNoFrame(const ClipFormat& format) {
    const FrameLimits limits = GetFrameLimits();
    const auto [width, height] = format.size;
    if (width == 0 || height == 0) return fmt::format("a frame of {} x {} has no pixels", width, height);
    if (width > limits.maxSide || height > limits.maxSide)
        return fmt::format("a frame of {} x {} is too large; the host makes up to {} pixels a side", width,
                           height, limits.maxSide);
    const std::uint64_t bytes = format.BytesPerFrame();
    if (bytes > limits.maxBytes)
        return fmt::format("a frame of {} x {} is too large: it takes {} bytes, and the host makes up to {}",
                           width, height, bytes, limits.maxBytes);
    return {};
}

} // namespace corvane
