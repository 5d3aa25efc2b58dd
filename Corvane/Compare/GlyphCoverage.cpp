#include "GlyphCoverage.h"

#include <algorithm>
#include <array>
#include <vector>

namespace corvane {
namespace {

constexpr std::uint32_t kFine = 2; // samples a unit of the grid
constexpr std::uint32_t kFineColumns = raster::kGlyphWidth * kFine;
constexpr std::uint32_t kFineRows = raster::kGlyphHeight * kFine;

// The sum of what lies above and to the left of each sample, so that the sum of any rectangle is four of
// them.
class SummedGlyph {
  public:
    explicit SummedGlyph(std::uint32_t glyph) : mSums(std::size_t{kFineColumns + 1} * (kFineRows + 1)) {
        std::array<std::uint8_t, kFineColumns> coverage;
        for (std::uint32_t row = 0; row < kFineRows; ++row) {
            raster::CoverRow(glyph, kFineRows, row, 0, coverage);
            float sum = 0;
            for (std::uint32_t column = 0; column < kFineColumns; ++column) {
                sum += static_cast<float>(coverage[column]) / 255.0f;
                mSums[Index(column + 1, row + 1)] = mSums[Index(column + 1, row)] + sum;
            }
        }
    }

    float Sum(float x, float y) const {
        x = std::clamp(x, 0.0f, static_cast<float>(kFineColumns));
        y = std::clamp(y, 0.0f, static_cast<float>(kFineRows));
        const std::uint32_t column = std::min(static_cast<std::uint32_t>(x), kFineColumns - 1);
        const std::uint32_t row = std::min(static_cast<std::uint32_t>(y), kFineRows - 1);
        const float right = x - static_cast<float>(column);
        const float down = y - static_cast<float>(row);
        const float* at = &mSums[Index(column, row)];
        const float above = at[0] + (at[1] - at[0]) * right;
        const float below = at[kFineColumns + 1] + (at[kFineColumns + 2] - at[kFineColumns + 1]) * right;
        return above + (below - above) * down;
    }

  private:
    static std::size_t Index(std::uint32_t column, std::uint32_t row) {
        return std::size_t{row} * (kFineColumns + 1) + column;
    }

    std::vector<float> mSums;
};

const SummedGlyph& Summed(std::uint32_t glyph) {
    static const std::vector<SummedGlyph> sGlyphs = [] {
        std::vector<SummedGlyph> glyphs;
        for (std::uint32_t at = 0; at < raster::kGlyphCount; ++at) glyphs.emplace_back(at);
        return glyphs;
    }();
    return sGlyphs[glyph];
}

} // namespace

float GlyphCoverage(std::uint32_t glyph, float left, float top, float right, float bottom) {
    constexpr auto kScale = static_cast<float>(kFine);
    const SummedGlyph& sums = Summed(glyph);
    const float covered = sums.Sum(right * kScale, bottom * kScale) -
                          sums.Sum(left * kScale, bottom * kScale) - sums.Sum(right * kScale, top * kScale) +
                          sums.Sum(left * kScale, top * kScale);
    return covered / ((right - left) * (bottom - top) * kScale * kScale);
}

} // namespace corvane
