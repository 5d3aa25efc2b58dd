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

} // namespace corvane
