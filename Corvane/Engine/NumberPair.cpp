#include "NumberPair.h"

#include <charconv>

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

std::optional<NumberPair> ReadPair(std::string_view text, const PairForm& form) {
    const std::size_t at = text.find(form.separator);
    const bool two = at != std::string_view::npos;
    const auto first = ReadNumber(text.substr(0, at), form);
    const auto second = two ? ReadNumber(text.substr(at + 1), form) : std::nullopt;
    if (!first || (two ? !second : !form.oneWillDo)) return std::nullopt;
    return NumberPair{*first, second};
}

} // namespace corvane
