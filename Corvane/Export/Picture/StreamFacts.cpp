#include "StreamFacts.h"

#include <bit>

namespace corvane {
namespace {

bool Is625(std::uint32_t height, Rate rate) {
    if (height == 576 || height == 288) return true;
    if (height == 480 || height == 486 || height == 240) return false;
    // 25 times a power of two, which may be below 1; the ratio is in lowest terms.
    return rate.scale != 0 && rate.scale >> std::countr_zero(rate.scale) == 25 &&
           std::has_single_bit(rate.sampleSize);
}

} // namespace

ColorTags TagsFor(const ClipFormat& format) {
    ColorTags tags;
    const std::uint32_t height = format.size.height;
    const bool standardDefinition = height <= 576;
    const int line = Is625(height, format.rate) && standardDefinition ? kH273_625 : kH273_525;
    if (standardDefinition) tags = {line, line, kH273_525};
    if ((format.raster & kRK_YCbCr) != 0) tags.matrix = (format.raster & kRK_709) != 0 ? kH273_709 : line;
    return tags;
}

StreamFacts FactsOf(const Clip& clip, std::int64_t frames) {
    StreamFacts facts{clip.Info().format, {}, frames};
    facts.rate = Reduced(facts.rate);
    facts.aspect = Reduced(facts.aspect);
    if (facts.order == FieldOrder::kUnknown) facts.order = FieldOrder::kUpperFirst;
    facts.tags = TagsFor(facts);
    return facts;
}

} // namespace corvane
