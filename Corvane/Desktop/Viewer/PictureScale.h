#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace corvane::desktop {

/// How the lines (or columns) of a frame fall on a stretch of a picture's device pixels.
///
/// Each device pixel is the average of the area that it covers: a picture that is made smaller loses no thin
/// line, and one that is made larger keeps the edges of its pixels sharp. zimg's resize has no such filter,
/// and it looks at every pixel: whole frames took it 3 to 90 times as long. Any thread, once made.
class ScaleAxis {
  public:
    /// Weights of a device pixel are whole and have the sum `kWhole`, so that a flat area keeps its value
    /// and 16 bits hold a sum of bytes.
    static constexpr int kWhole = 256;

    /// A line, and its share of a device pixel.
    struct Tap {
        std::uint32_t line;
        std::uint16_t weight;
    };

    /// `extent` rows of the frame fill `result` device pixels; a line stands for `step` rows, and there are
    /// `lines` of them (the last one stands for what remains). Device pixels `begin` to `end` are wanted:
    /// at least one, and inside the result. Throws `std::bad_alloc`.
    ScaleAxis(std::uint32_t extent, std::uint32_t step, std::uint32_t lines, int result, int begin, int end);

    /// What device pixel `begin + index` is made of, in ascending order of lines.
    std::span<const Tap> TapsOf(int index) const;
    /// The first and the last line that any of the device pixels is made of.
    std::uint32_t FirstLine() const { return mTaps.front().line; }
    std::uint32_t LastLine() const { return mTaps.back().line; }

  private:
    void Add(std::int64_t low, std::int64_t high, std::int64_t unit, std::int64_t lines);

    std::vector<Tap> mTaps;
    std::vector<std::size_t> mStarts; // of each device pixel's taps, and their end
};

} // namespace corvane::desktop
