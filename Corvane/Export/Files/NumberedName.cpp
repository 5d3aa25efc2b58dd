#include "NumberedName.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Foundation/FileError.h"

namespace corvane {
namespace {

constexpr int kMaximumDigits = 18;

// The digits asked for by what follows a percent sign (`d`, `5d`, `05d`); moves `rest` behind it. Negative if
// it is none of these.
int TakeNumber(std::string_view& rest) {
    int digits = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), digits);
    const auto length = static_cast<std::size_t>(end - rest.data());
    if (length >= rest.size() || rest[length] != 'd' || digits < 0 || digits > kMaximumDigits ||
        error == std::errc::result_out_of_range)
        return -1;
    rest.remove_prefix(length + 1);
    return digits;
}

} // namespace

std::optional<NumberedName> NumberedName::Parse(const std::filesystem::path& path) {
    const std::string name = path.filename().string();
    NumberedName parsed;
    parsed.mFolder = path.parent_path();
    std::string* part = &parsed.mBefore;
    std::string_view rest = name;
    while (!rest.empty()) {
        const char character = rest.front();
        rest.remove_prefix(1);
        if (character != '%' || rest.starts_with('%')) {
            *part += character;
            if (character == '%') rest.remove_prefix(1);
            continue;
        }
        const int digits = TakeNumber(rest);
        if (digits < 0 || part == &parsed.mAfter)
            throw UsageFailure(fmt::format(
                "{}: the name may hold one number such as %05d, and %% for a percent sign", path.string()));
        parsed.mDigits = digits;
        part = &parsed.mAfter;
    }
    if (part == &parsed.mBefore) return std::nullopt;
    return parsed;
}

std::filesystem::path NumberedName::For(std::int64_t number) const {
    return mFolder / fmt::format("{}{:0{}}{}", mBefore, number, mDigits, mAfter);
}

std::vector<std::int64_t> NumberedName::Existing() const {
    std::vector<std::int64_t> numbers;
    std::error_code error;
    std::filesystem::directory_iterator entry(mFolder.empty() ? "." : mFolder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(mBefore) || name.size() <= mBefore.size()) continue;
        std::int64_t number = -1;
        std::from_chars(name.data() + mBefore.size(), name.data() + name.size(), number);
        // Not every way to write a number is that of the name.
        if (number >= 0 && For(number).filename() == name) numbers.push_back(number);
    }
    if (error) throw FileError::OfReading(error.value());
    std::ranges::sort(numbers);
    return numbers;
}

} // namespace corvane
