#include "Finding.h"

namespace corvane {

void FrameRanges::Add(std::int64_t frame) {
    if (!mRanges.empty() && frame <= mRanges.back().last) return;
    if (!mRanges.empty() && mRanges.back().last + 1 == frame)
        mRanges.back().last = frame;
    else
        mRanges.push_back({frame, frame});
    ++mCount;
}

} // namespace corvane
