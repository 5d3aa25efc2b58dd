#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>

#include "Suites.h"
#include "lummediatypes.h"

namespace corvane {

namespace {

constexpr std::int32_t kFailed = -1;
constexpr std::uint64_t kMaximumTerm = std::numeric_limits<std::uint32_t>::max();

struct Fraction {
    std::uint64_t numerator;
    std::uint64_t denominator;
};

/// Whether `a` is closer to `value` than `b` is. All terms are below 2^33 except those of `value`, which are
/// below 2^63: the products fit 128 bits.
bool IsCloser(Fraction a, Fraction b, Fraction value) {
    using Wide = unsigned __int128;
    const auto distance = [&](Fraction f) {
        const Wide left = Wide(f.numerator) * value.denominator;
        const Wide right = Wide(value.numerator) * f.denominator;
        return left > right ? left - right : right - left;
    };
    // |a - v| < |b - v|, multiplied by all three denominators; divided first, since that could leave 128
    // bits.
    const long double da = static_cast<long double>(distance(a)) / static_cast<long double>(a.denominator);
    const long double db = static_cast<long double>(distance(b)) / static_cast<long double>(b.denominator);
    return da < db;
}

/// The nearest fraction whose terms both fit 32 bits: the last continued-fraction convergent that fits, or
/// the semiconvergent after it, whichever is closer.
Fraction NearestFitting(Fraction value) {
    if (value.numerator <= kMaximumTerm && value.denominator <= kMaximumTerm) return value;
    Fraction previous{0, 1};
    Fraction current{1, 0};
    Fraction rest = value;
    while (rest.denominator != 0) {
        const std::uint64_t whole = rest.numerator / rest.denominator;
        // The largest step that keeps both terms within 32 bits.
        std::uint64_t step = whole;
        if (current.numerator != 0)
            step = std::min(step, (kMaximumTerm - previous.numerator) / current.numerator);
        if (current.denominator != 0)
            step = std::min(step, (kMaximumTerm - previous.denominator) / current.denominator);
        const Fraction next{step * current.numerator + previous.numerator,
                            step * current.denominator + previous.denominator};
        if (step < whole) {
            const bool nextIsBetter =
                next.denominator != 0 && (current.denominator == 0 || IsCloser(next, current, value));
            return nextIsBetter ? next : current;
        }
        previous = current;
        current = next;
        rest = {rest.denominator, rest.numerator % rest.denominator};
    }
    return current;
}

std::int32_t RateToTicks(std::uint32_t scale, std::uint32_t sampleSize, std::int64_t* ticksPerFrame) {
    if (ticksPerFrame == nullptr) return kFailed;
    if (scale == 0) {
        *ticksPerFrame = 0;
        return kFailed;
    }
    using Wide = unsigned __int128;
    const Wide ticks = (Wide(lummediatypes::kTicksPerSecond) * sampleSize * 2 + scale) / (Wide(scale) * 2);
    *ticksPerFrame =
        static_cast<std::int64_t>(std::min<Wide>(ticks, std::numeric_limits<std::int64_t>::max()));
    return 0;
}

std::int32_t TicksToRate(std::int64_t ticksPerFrame, std::uint32_t* scale, std::uint32_t* sampleSize) {
    if (scale == nullptr || sampleSize == nullptr || ticksPerFrame <= 0) return kFailed;
    const std::int64_t divisor = std::gcd(lummediatypes::kTicksPerSecond, ticksPerFrame);
    const Fraction rate =
        NearestFitting({static_cast<std::uint64_t>(lummediatypes::kTicksPerSecond / divisor),
                        static_cast<std::uint64_t>(ticksPerFrame / divisor)});
    *scale = static_cast<std::uint32_t>(rate.numerator);
    *sampleSize = static_cast<std::uint32_t>(rate.denominator);
    return 0;
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
