#include "StreamFacts.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "CvPixelFormats.h"
#include "lummediatypes.h"

namespace corvane {
namespace {

// Halves both terms until they fit; only absurd ratios lose anything.
Ratio Reduced(std::uint64_t numerator, std::uint64_t denominator) {
    if (numerator == 0 || denominator == 0) return {};
    const std::uint64_t divisor = std::gcd(numerator, denominator);
    numerator /= divisor;
    denominator /= divisor;
    while (std::max(numerator, denominator) > std::numeric_limits<std::int32_t>::max()) {
        numerator = std::max<std::uint64_t>(numerator / 2, 1);
        denominator = std::max<std::uint64_t>(denominator / 2, 1);
    }
    return {static_cast<std::int32_t>(numerator), static_cast<std::int32_t>(denominator)};
}

FieldOrder OrderOf(std::uint8_t fieldType) {
    if (fieldType == 0) return FieldOrder::kProgressive;
    return fieldType == 2 ? FieldOrder::kLowerFirst : FieldOrder::kUpperFirst;
}

bool Is625(std::uint32_t height, Ratio rate) {
    if (height == 576 || height == 288) return true;
    if (height == 480 || height == 486 || height == 240) return false;
    int numerator = rate.numerator;
    while (numerator % 2 == 0) numerator /= 2;
    return numerator == 25 && (rate.denominator & (rate.denominator - 1)) == 0;
}

} // namespace

std::uint64_t StreamFacts::BytesPerFrame() const {
    return std::uint64_t{width} * height * BytesPerPixel(format);
}

ColorTags TagsFor(std::uint32_t height, Ratio rate, RK_PixelFormat format) {
    ColorTags tags;
    const bool standardDefinition = height <= 576;
    const int line = Is625(height, rate) && standardDefinition ? kH273_625 : kH273_525;
    if (standardDefinition) tags = {line, line, kH273_525};
    if ((format & kRK_YCbCr) != 0) tags.matrix = (format & kRK_709) != 0 ? kH273_709 : line;
    return tags;
}

StreamFacts FactsOf(const Clip& clip, std::int64_t frames) {
    const ClipInfo& info = clip.Info();
    StreamFacts facts;
    facts.width = info.width;
    facts.height = info.height;
    facts.format = BEPixelFormatToRKPixelFormat(SDKToBEPixelFormat(info.deliveredFormat.value()));
    facts.order = OrderOf(info.fieldType);
    facts.rate = info.ticksPerFrame > 0
                     ? Reduced(lummediatypes::kTicksPerSecond, static_cast<std::uint64_t>(info.ticksPerFrame))
                     : Ratio{};
    facts.aspect = Reduced(info.parNumerator, info.parDenominator);
    facts.tags = TagsFor(facts.height, facts.rate, facts.format);
    facts.frames = frames;
    return facts;
}

} // namespace corvane
