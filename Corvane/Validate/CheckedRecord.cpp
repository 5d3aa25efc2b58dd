#include "CheckedRecord.h"

#include <algorithm>

#include <fmt/format.h>

namespace corvane {

CheckedMemory::CheckedMemory(std::size_t size)
    : mBytes(size + 2 * kMargin, std::byte{kUndefinedByte}), mBefore(mBytes) {}

std::string CheckedMemory::Touched(std::initializer_list<RecordField> allowed) const {
    const auto touched = [&](std::size_t index) {
        if (mBytes[index] == mBefore[index]) return false;
        return std::ranges::none_of(allowed, [&](const RecordField& field) {
            return index >= kMargin + field.offset && index < kMargin + field.offset + field.size;
        });
    };
    std::string ranges;
    for (std::size_t first = 0; first < mBytes.size(); ++first) {
        if (!touched(first)) continue;
        std::size_t last = first;
        while (last + 1 < mBytes.size() && touched(last + 1)) ++last;
        ranges += (ranges.empty() ? "it touched " : " and ") + Describe(first, last);
        first = last;
    }
    return ranges;
}

std::string CheckedMemory::Describe(std::size_t first, std::size_t last) const {
    // Counted from the record's first byte: negative before it.
    const auto from = static_cast<std::ptrdiff_t>(first) - static_cast<std::ptrdiff_t>(kMargin);
    const auto to = static_cast<std::ptrdiff_t>(last) - static_cast<std::ptrdiff_t>(kMargin);
    const std::string range =
        from == to ? fmt::format("byte {}", from) : fmt::format("bytes {} to {}", from, to);
    const auto size = static_cast<std::ptrdiff_t>(mBytes.size() - 2 * kMargin);
    return from < 0 || to >= size ? fmt::format("{} of a record of {} bytes", range, size) : range;
}

} // namespace corvane
