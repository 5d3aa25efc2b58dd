#include "NumberPair.h"

#include <charconv>
#include <limits>
#include <numeric>

namespace corvane {

namespace {

std::optional<std::int64_t> ReadNumber(std::string_view text, const PairForm& form) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    const bool good = result.ec == std::errc() && result.ptr == end;
    return good && number >= form.least && number <= form.most ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<NumberPair> ReadRate(std::string_view text) {
    constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max();
    if (const auto pair = ReadPair(text, {'/', 1, kMost, true}))
        return NumberPair{pair->first, pair->second.value_or(1)};
    const auto parts = ReadPair(text, {'.', 0, kMost, false});
    const std::size_t decimals = text.size() - text.find('.') - 1;
    if (!parts || decimals > 6) return std::nullopt;
    std::int64_t unit = 1;
    for (std::size_t i = 0; i < decimals; ++i) unit *= 10;
    const std::int64_t value = parts->first * unit + *parts->second; // in units of the last decimal
    const std::int64_t nominal = parts->first + 1;
    const std::int64_t product = nominal * 1000 * unit;
    const bool isRounded = value == (product + 500) / 1001 || value == product / 1001;
    if (isRounded && decimals >= 2 && nominal * 1000 <= kMost) return NumberPair{nominal * 1000, 1001};
    const std::int64_t common = std::gcd(value, unit);
    if (value == 0 || value / common > kMost) return std::nullopt;
    return NumberPair{value / common, unit / common};
}

std::optional<NumberPair> ReadPair(std::string_view text, const PairForm& form) {
    const std::size_t at = text.find(form.separator);
    const bool two = at != std::string_view::npos;
    const auto first = ReadNumber(text.substr(0, at), form);
    const auto second = two ? ReadNumber(text.substr(at + 1), form) : std::nullopt;
    if (!first || (two ? !second : !form.oneWillDo)) return std::nullopt;
    return NumberPair{*first, second};
}

} // namespace corvane
