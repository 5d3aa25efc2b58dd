#include "Fraction.h"

#include <algorithm>
#include <numeric>

namespace corvane {

namespace {

/// Whether `a` is closer to `value` than `b` is. All terms are below 2^33 except those of `value`, which are
/// below 2^63: the products fit 128 bits.
bool IsCloser(Fraction a, Fraction b, Fraction value) {
    using Wide = unsigned __int128;
    const auto distance = [&](Fraction f) {
        const Wide left = Wide(f.numerator) * value.denominator;
        const Wide right = Wide(value.numerator) * f.denominator;
        return left > right ? left - right : right - left;
    };
    // |a - v| < |b - v|, multiplied by all three denominators; divided first if that could leave 128 bits.
    const long double da = static_cast<long double>(distance(a)) / static_cast<long double>(a.denominator);
    const long double db = static_cast<long double>(distance(b)) / static_cast<long double>(b.denominator);
    return da < db;
}

} // namespace

Fraction NearestFraction(Fraction value, std::uint32_t maximumTerm) {
    const std::uint64_t divisor = std::gcd(value.numerator, value.denominator);
    value = {value.numerator / divisor, value.denominator / divisor};
    if (value.numerator <= maximumTerm && value.denominator <= maximumTerm) return value;

    // The last convergent of the continued fraction that fits, or the semiconvergent after it, whichever is
    // closer.
    Fraction previous{0, 1};
    Fraction current{1, 0};
    Fraction rest = value;
    while (rest.denominator != 0) {
        const std::uint64_t whole = rest.numerator / rest.denominator;
        // The largest step that keeps both terms within the maximum.
        std::uint64_t step = whole;
        if (current.numerator != 0)
            step = std::min(step, (maximumTerm - previous.numerator) / current.numerator);
        if (current.denominator != 0)
            step = std::min(step, (maximumTerm - previous.denominator) / current.denominator);
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

} // namespace corvane
