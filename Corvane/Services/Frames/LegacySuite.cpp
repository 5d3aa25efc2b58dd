#include <algorithm>
#include <cstdint>
#include <limits>

#include "Fraction.h"
#include "Suites.h"
#include "lummediatypes.h"

namespace corvane {

namespace {

std::int32_t RateToTicks(std::uint32_t scale, std::uint32_t sampleSize, std::int64_t* ticksPerFrame) {
    if (ticksPerFrame == nullptr) return kSuiteFailed;
    if (scale == 0) {
        *ticksPerFrame = 0;
        return kSuiteFailed;
    }
    using Wide = unsigned __int128;
    const Wide ticks = (Wide(lummediatypes::kTicksPerSecond) * sampleSize * 2 + scale) / (Wide(scale) * 2);
    *ticksPerFrame =
        static_cast<std::int64_t>(std::min<Wide>(ticks, std::numeric_limits<std::int64_t>::max()));
    return kSuiteSucceeded;
}

std::int32_t TicksToRate(std::int64_t ticksPerFrame, std::uint32_t* scale, std::uint32_t* sampleSize) {
    if (scale == nullptr || sampleSize == nullptr || ticksPerFrame <= 0) return kSuiteFailed;
    const Fraction rate = NearestFraction(
        {std::uint64_t{lummediatypes::kTicksPerSecond}, static_cast<std::uint64_t>(ticksPerFrame)},
        std::numeric_limits<std::uint32_t>::max());
    *scale = static_cast<std::uint32_t>(rate.numerator);
    *sampleSize = static_cast<std::uint32_t>(rate.denominator);
    return kSuiteSucceeded;
}

} // namespace

const CvLegacySuite1* LegacySuite1() {
    static constexpr CvLegacySuite1 suite{RateToTicks};
    return &suite;
}

const CvLegacySuite2* LegacySuite2() {
    static constexpr CvLegacySuite2 suite{RateToTicks, TicksToRate};
    return &suite;
}

} // namespace corvane
