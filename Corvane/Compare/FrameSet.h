#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Finding.h"

namespace corvane {

/// Frames that are added in any order; takes about a bit per frame. One thread at a time.
class FrameSet {
  public:
    /// Throws `std::bad_alloc`.
    void Add(std::int64_t frame);
    bool Has(std::int64_t frame) const;
    std::int64_t Count() const { return mCount; }
    /// Those that are there, in order. Throws `std::bad_alloc`.
    std::vector<FrameRange> Ranges() const;
    /// Those of a range that are not there and not in `other` either. Throws `std::bad_alloc`.
    std::vector<FrameRange> Absent(const FrameRange& range, const FrameSet& other) const;

  private:
    static constexpr std::int64_t kPage = 1 << 14;
    std::map<std::int64_t, std::bitset<kPage>> mPages;
    std::int64_t mCount = 0;
};

/// "frame 3", "frames 3 to 5 and 9" or, of many, "frames 3, 9, 12, 18 and 40 more". Throws `std::bad_alloc`.
/// Any thread.
std::string NameFrames(const std::vector<FrameRange>& ranges);

} // namespace corvane
