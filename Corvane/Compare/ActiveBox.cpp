#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "Placement.h"
#include "PlaneView.h"

namespace corvane {
namespace {

constexpr float kAlike = 10.0f / 255; // samples of one bar after lossy coding
constexpr std::uint32_t kLines = 32;  // that are looked at across bars

using Shade = std::array<float, 3>;

float Apart(const Shade& a, const Shade& b) {
    float most = 0;
    for (std::size_t i = 0; i < 3; ++i) most = std::max(most, std::abs(a[i] - b[i]));
    return most;
}

class Pixels {
  public:
    explicit Pixels(const VideoPicture& picture) : mPicture(picture) {
        for (std::size_t i = 0; i < 3; ++i) {
            const int shiftX = Subsampled(i) ? picture.format.subsampleW : 0;
            const int shiftY = Subsampled(i) ? picture.format.subsampleH : 0;
            mPlanes[i] = {picture.plane[i],
                          static_cast<std::ptrdiff_t>(picture.format.SampleBytes()),
                          picture.stride[i],
                          picture.size.width >> shiftX,
                          picture.size.height >> shiftY,
                          picture.format.bits};
        }
    }
    Shade At(std::uint32_t x, std::uint32_t y) const {
        Shade color{};
        for (std::size_t i = 0; i < 3; ++i) {
            const PlaneView& plane = mPlanes[i];
            if (!plane.base) continue;
            color[i] =
                plane.At(std::min(x >> (Subsampled(i) ? mPicture.format.subsampleW : 0), plane.width - 1),
                         std::min(y >> (Subsampled(i) ? mPicture.format.subsampleH : 0), plane.height - 1));
        }
        return color;
    }
    Size GetSize() const { return mPicture.size; }

  private:
    bool Subsampled(std::size_t plane) const { return plane > 0 && mPicture.format.yCbCr; }

    const VideoPicture& mPicture;
    std::array<PlaneView, 3> mPlanes;
};

// How long the first color of a line goes on, from either end.
struct Runs {
    std::uint32_t first, last;
};

template <typename ColorAt>
std::uint32_t RunOf(std::uint32_t length, const ColorAt& colorAt) {
    const Shade start = colorAt(0);
    std::uint32_t run = 1;
    // Some of a bar's samples will do, of an odd number, and all of the first ones: rows of fields look alike
    // by twos or fours.
    constexpr std::uint32_t kStride = 7, kAll = 16;
    while (run < length && Apart(colorAt(run), start) <= kAlike) run += run < kAll ? 1 : kStride;
    if (run >= length && Apart(colorAt(length - 1), start) <= kAlike) return length;
    run = run < kStride ? 1 : run - kStride;
    while (run < length && Apart(colorAt(run), start) <= kAlike) ++run;
    constexpr std::uint32_t kNarrowest = 4; // narrower ones can't be told from fields
    if (run < kNarrowest) return 0;
    // The edge is half way to what comes after; a slope has none.
    if (Apart(colorAt(run - 2), start) > kAlike / 2) return 0;
    const Shade inside = colorAt(std::min(run + 3, length - 1));
    const float half = Apart(inside, start) / 2;
    std::uint32_t edge = run - 3;
    while (edge < length && Apart(colorAt(edge), start) < half) ++edge;
    // Rows of fields whose chroma is halved look alike by twos; a bar's color does not come back.
    constexpr std::uint32_t kNear = 8;
    for (std::uint32_t i = edge + 2; i < std::min(edge + kNear, length); ++i)
        if (Apart(colorAt(i), start) <= kAlike) return 0;
    return edge;
}

template <typename ColorAt>
Runs RunsOf(std::uint32_t length, const ColorAt& colorAt) {
    return {RunOf(length, colorAt), RunOf(length, [&](std::uint32_t i) { return colorAt(length - 1 - i); })};
}

// If the runs from both ends meet, one is the bar and the other one what it leaves free.
void ChooseSide(Runs& runs, std::uint32_t length, bool firstIsBar) {
    if (runs.first + runs.last + 3 < length) {
        // What stands out between so wide bars is rather a number.
        if ((runs.first + runs.last) * 4 > length * 3) runs = {0, 0};
        return;
    }
    (firstIsBar ? runs.last : runs.first) = 0;
}

bool IsNearerBlack(const Shade& a, const Shade& b) {
    return a[0] < b[0];
}

// Bars at the sides: most lines begin and end with as many pixels of one color.
Runs FindSides(const Pixels& pixels) {
    const Size size = pixels.GetSize();
    std::array<std::vector<std::uint32_t>, 2> found;
    for (std::uint32_t i = 0; i < kLines; ++i) {
        const auto y = static_cast<std::uint32_t>(std::uint64_t{size.height} * (2 * i + 1) / (2 * kLines));
        const auto colorAt = [&](std::uint32_t x) { return pixels.At(x, y); };
        Runs runs = RunsOf(size.width, colorAt);
        if (runs.first >= size.width) continue;
        ChooseSide(runs, size.width, IsNearerBlack(colorAt(0), colorAt(size.width - 1)));
        found[0].push_back(runs.first);
        found[1].push_back(runs.last);
    }
    // A number makes lines uneven, too, but only a sixth of a frame's.
    if (found[0].size() < kLines / 4) return {0, 0};
    Runs sides{};
    for (std::size_t side = 0; side < 2; ++side) {
        std::vector<std::uint32_t>& runs = found[side];
        std::ranges::sort(runs);
        const std::uint32_t low = runs[runs.size() / 4];
        const auto near =
            std::ranges::count_if(runs, [&](std::uint32_t run) { return run + 2 >= low && run <= low + 2; });
        const bool isBar = low >= 2 && static_cast<std::size_t>(near) * 2 >= runs.size();
        (side == 0 ? sides.first : sides.last) = isBar ? low : 0;
    }
    return sides;
}

// The color of most of a row, between two columns.
Shade RowColor(const Pixels& pixels, std::uint32_t left, std::uint32_t right, std::uint32_t y) {
    constexpr std::uint32_t kSamples = 7;
    std::array<std::array<float, kSamples>, 3> samples;
    for (std::uint32_t i = 0; i < kSamples; ++i) {
        const Shade color = pixels.At(left + (right - left) * (2 * i + 1) / (2 * kSamples), y);
        for (std::size_t plane = 0; plane < 3; ++plane) samples[plane][i] = color[plane];
    }
    Shade usual;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        std::ranges::nth_element(samples[plane], samples[plane].begin() + kSamples / 2);
        usual[plane] = samples[plane][kSamples / 2];
    }
    return usual;
}

} // namespace

Box FindActive(const VideoPicture& picture) {
    const Pixels pixels(picture);
    const Size size = picture.size;
    Box active{0, 0, size.width, size.height};
    if (size.width < 16 || size.height < 16) return active;
    const Runs sides = FindSides(pixels);
    active.left = sides.first;
    active.right = size.width - sides.last;
    if (active.left + 8 > active.right) return {0, 0, size.width, size.height};
    std::vector<Shade> rows;
    for (std::uint32_t y = 0; y < size.height; ++y)
        rows.push_back(RowColor(pixels, active.left, active.right, y));
    Runs ends = RunsOf(size.height, [&](std::uint32_t y) { return rows[y]; });
    if (ends.first >= size.height) return active;
    ChooseSide(ends, size.height, IsNearerBlack(rows.front(), rows.back()));
    // A single row is a field's, or one that a frame of odd height leaves out.
    if (ends.first >= 2) active.top = ends.first;
    if (ends.last >= 2) active.bottom = size.height - ends.last;
    if (active.top + 8 > active.bottom) return {0, 0, size.width, size.height};
    return active;
}

} // namespace corvane
