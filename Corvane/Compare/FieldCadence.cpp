#include "FieldCadence.h"

#include <algorithm>

#include <fmt/format.h>

namespace corvane {

void FieldCadence::Add(std::int64_t frame) {
    if (mCount != 0 && frame == mFrame) {
        ++mCount;
        return;
    }
    // The first count may have begun before the video did.
    if (mCount != 0 && mFirstPassed && mKept < kKept) mCounts[mKept++] = mCount;
    if (mCount != 0) mFirstPassed = true;
    mFrame = frame;
    mCount = 1;
}

std::string FieldCadence::Pattern() const {
    constexpr std::size_t kRepeats = 3;
    for (std::size_t length = 1; length <= kLongest && length * kRepeats <= mKept; ++length) {
        bool same = true;
        for (std::size_t i = length; i < mKept && same; ++i) same = mCounts[i] == mCounts[i - length];
        if (!same) continue;
        std::vector<int> best(mCounts.begin(), mCounts.begin() + static_cast<std::ptrdiff_t>(length));
        if (length == 1 && best[0] == 2) return {};
        std::vector<int> turned = best;
        for (std::size_t i = 1; i < length; ++i) {
            std::rotate(turned.begin(), turned.begin() + 1, turned.end());
            best = std::min(best, turned);
        }
        return fmt::format("{}", fmt::join(best, ":"));
    }
    return {};
}

} // namespace corvane
