#include "StampGrid.h"

#include <algorithm>
#include <cmath>

namespace corvane {

void StampGrid::Add(const std::optional<std::int64_t>& time, const std::optional<std::int64_t>& frames) {
    if (!time) {
        ++mUnstamped;
        return;
    }
    if (mTimes++ == 0) {
        mFirst = mLast = *time;
        return;
    }
    constexpr std::size_t kMostKinds = 4096; // a wild stream has more; the rest looks the same
    // Repeats and steps by one frame are a picture's length alike; so is what is not known.
    const std::int64_t gone = std::max<std::int64_t>(frames.value_or(1), 1);
    std::pair key{gone, *time - mLast};
    if (mSteps.size() >= kMostKinds && !mSteps.contains(key)) key = mSteps.begin()->first;
    ++mSteps[key];
    mLast = *time;
}

// The commonest length of steps.
std::int64_t StampGrid::Usual() const {
    std::map<std::int64_t, std::int64_t> counts;
    for (const auto& [key, count] : mSteps) counts[key.second] += count;
    const auto usual = std::ranges::max_element(counts, {}, [](const auto& entry) { return entry.second; });
    return usual == counts.end() ? 0 : usual->first;
}

double StampGrid::PictureLength() const {
    const std::int64_t usual = Usual();
    double units = 0;
    double count = 0;
    for (const auto& [key, steps] : mSteps) {
        if (std::abs(key.second - usual) > 1) continue;
        units += static_cast<double>(key.second * steps);
        count += static_cast<double>(steps);
    }
    return count == 0 ? 0 : units / count;
}

double StampGrid::Uncertainty() const {
    return 1.5 / static_cast<double>(std::max<std::int64_t>(mTimes - 1, 1));
}

std::pair<std::int64_t, double> StampGrid::Irregular() const {
    const double length = PictureLength();
    std::int64_t pictures = 0;
    double most = 0;
    for (const auto& [key, count] : mSteps) {
        const auto units = static_cast<double>(key.second);
        // Frames that are missing may leave their time free, or may have lost it.
        const double off =
            std::min(std::abs(units - length), std::abs(units - length * static_cast<double>(key.first)));
        if (off <= 1.01) continue;
        most = std::max(most, off);
        pictures += count;
    }
    return {pictures, most};
}

} // namespace corvane
