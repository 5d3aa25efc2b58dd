#include "FrameSet.h"

#include <fmt/format.h>

namespace corvane {

void FrameSet::Add(std::int64_t frame) {
    if (frame < 0) return;
    auto bit = mPages[frame / kPage][static_cast<std::size_t>(frame % kPage)];
    if (!bit) ++mCount;
    bit = true;
}

bool FrameSet::Has(std::int64_t frame) const {
    if (frame < 0) return false;
    const auto page = mPages.find(frame / kPage);
    return page != mPages.end() && page->second[static_cast<std::size_t>(frame % kPage)];
}

std::vector<FrameRange> FrameSet::Ranges() const {
    FrameRanges ranges;
    for (const auto& [number, page] : mPages)
        for (std::int64_t i = 0; i < kPage; ++i)
            if (page[static_cast<std::size_t>(i)]) ranges.Add(number * kPage + i);
    return ranges.Get();
}

std::vector<FrameRange> FrameSet::Absent(const FrameRange& range, const FrameSet& other) const {
    FrameRanges ranges;
    for (std::int64_t frame = range.first; frame <= range.last; ++frame)
        if (!Has(frame) && !other.Has(frame)) ranges.Add(frame);
    return ranges.Get();
}

std::string NameFrames(const std::vector<FrameRange>& ranges) {
    constexpr std::size_t kNamed = 4;
    if (ranges.size() == 1 && ranges[0].first == ranges[0].last)
        return fmt::format("frame {}", ranges[0].first);
    std::string names = "frames ";
    std::int64_t rest = 0;
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        const auto [first, last] = ranges[i];
        if (i >= kNamed && ranges.size() > kNamed + 1) {
            rest += last - first + 1;
            continue;
        }
        if (i > 0) names += i + 1 == ranges.size() ? " and " : ", ";
        names += first == last ? fmt::format("{}", first) : fmt::format("{} to {}", first, last);
    }
    return rest == 0 ? names : fmt::format("{} and {} more", names, rest);
}

} // namespace corvane
