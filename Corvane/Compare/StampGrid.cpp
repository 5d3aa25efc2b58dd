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

// The mean of the steps that are longer than `least` and shorter than `most`, and how many there are.
std::pair<double, std::int64_t> StampGrid::Mean(double least, double most) const {
    double units = 0;
    std::int64_t count = 0;
    for (const auto& [key, steps] : mSteps) {
        const auto step = static_cast<double>(key.second);
        if (step <= least || step >= most) continue;
        units += step * static_cast<double>(steps);
        count += steps;
    }
    return {count == 0 ? 0 : units / static_cast<double>(count), count};
}

double StampGrid::PictureLength() const {
    const auto usual = static_cast<double>(Usual());
    const auto [length, count] = Mean(usual - 1.5, usual + 1.5);
    // If many steps are of other lengths, they jitter about their mean; after those that are twice as long,
    // pictures are missing.
    return count * 5 > (mTimes - 1) * 4 ? length : Mean(0, usual * 1.9).first;
}

double StampGrid::Uncertainty() const {
    const auto [off, most] = Irregular();
    // Jitter can move both ends.
    const double ends = off * 5 > mTimes - 1 ? 2 * most : 0;
    return (1.5 + ends) / static_cast<double>(std::max<std::int64_t>(mTimes - 1, 1));
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
