#pragma once

#include <cstdint>

namespace corvane {

/// A ratio that is not negative.
struct Fraction {
    std::uint64_t numerator;
    std::uint64_t denominator; ///< above 0
};

/// The fraction in lowest terms, neither of them above `maximumTerm`, that is nearest to `value`: equal to it
/// if its lowest terms fit. 0 over 1 for a value that is nearer to 0 than to any such fraction. The terms of
/// `value` are below 2^63. Any thread.
Fraction NearestFraction(Fraction value, std::uint32_t maximumTerm);

} // namespace corvane
