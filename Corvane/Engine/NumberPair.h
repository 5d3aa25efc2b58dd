#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace corvane {

/// How two whole numbers are written in one word.
struct PairForm {
    char separator;
    std::int64_t least, most; ///< of each number
    bool oneWillDo;           ///< whether the second number may be missing
};

/// Two numbers of a word.
struct NumberPair {
    std::int64_t first = 0;
    std::optional<std::int64_t> second; ///< empty if it is missing
};

/// Reads two decimal numbers that are all of `text`; 010 is ten. Empty if they are written in another form.
/// Any thread.
std::optional<NumberPair> ReadPair(std::string_view text, const PairForm& form);

/// Reads frames a second: N/D, a whole number, or decimals. Decimals that a rate of N x 1000/1001 is rounded
/// or cut to mean that rate: 29.97, 23.98, 23.976 and 119.88; others are exact: 12.5. The second number is
/// always there. Empty if it is no rate above 0 whose terms have 32 bits. Any thread.
std::optional<NumberPair> ReadRate(std::string_view text);

} // namespace corvane
