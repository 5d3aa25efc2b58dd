#include "GradientKeys.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kRows = GradientKeys::kRows;

std::size_t RowAt(std::size_t i, std::size_t height) {
    return (2 * i + 1) * height / (2 * kRows);
}

// Two neighboring rows, and how far from the first to the second.
struct Between {
    std::size_t first = 0, second = 0;
    double share = 0;
};

/// The place `at` of a frame, from 0 at its top to 1 at its bottom, in that many rows.
Between PlaceIn(std::size_t rows, double at) {
    const double row = std::clamp(at * static_cast<double>(rows) - 0.5, 0.0, static_cast<double>(rows - 1));
    const auto first = static_cast<std::size_t>(row);
    return {first, std::min(first + 1, rows - 1), row - static_cast<double>(first)};
}

} // namespace

GradientKeys::GradientKeys(std::vector<KeyFrame> keys, int bits, const SampleCoding& coding)
    : mKeys(std::move(keys)), mStep(std::ldexp(1.0, bits - 8)), mCoding(coding) {
    mCoding.bits = 8;
    for (const KeyFrame& key : mKeys) mHasColors = mHasColors && !key.colors.empty();
}

// The place in the frame, from 0 at its top to 1 at its bottom, of a row that is looked at, of a plane that
// has all rows of the picture or half of them.
double GradientKeys::PlaceOf(std::size_t i, bool halved, const RowRange& rows,
                             const GradientGuess& guess) const {
    const std::size_t count = halved ? (rows.height + 1) / 2 : rows.height;
    const double inside = (static_cast<double>(RowAt(i, count)) + 0.5) * (halved ? 2 : 1);
    const double at =
        (rows.top + inside - guess.axis.start) / guess.axis.scale / static_cast<double>(Height());
    return guess.flipped ? 1 - at : at;
}

std::vector<GradientKey> GradientKeys::In(const RowRange& rows, const GradientGuess& guess) const {
    std::vector<GradientKey> all;
    for (const KeyFrame& key : mKeys) {
        GradientRows& in = all.emplace_back(GradientKey{key.frame, GradientRows(kRows)}).rows;
        for (std::size_t i = 0; i < kRows; ++i) {
            if (guess.change) {
                in[i] = Changed(key, PlaceOf(i, false, rows, guess), guess.change);
                continue;
            }
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const auto& from = key.rows[plane];
                if (from.empty()) continue;
                const Between place = PlaceIn(from.size(), PlaceOf(i, from.size() < Height(), rows, guess));
                in[i][plane] =
                    (from[place.first] + (from[place.second] - from[place.first]) * place.share) / mStep;
            }
        }
    }
    return all;
}

std::array<double, 3> GradientKeys::Changed(const KeyFrame& key, double at,
                                            const std::function<Color(const Color&)>& change) const {
    const Between place = PlaceIn(key.colors.size(), at);
    const Color &first = key.colors[place.first], &second = key.colors[place.second];
    Color color;
    for (std::size_t part = 0; part < color.size(); ++part)
        color[part] = first[part] + (second[part] - first[part]) * place.share;
    const Codes codes = Encode(change(color), mCoding);
    std::array<double, 3> changed;
    for (std::size_t plane = 0; plane < 3; ++plane) changed[plane] = std::clamp(codes[plane], 0.0, 255.0);
    return changed;
}

GradientRows GradientKeys::Seen(const PictureRows& rows) const {
    GradientRows seen(kRows);
    for (std::size_t i = 0; i < kRows; ++i)
        for (std::size_t plane = 0; plane < 3; ++plane)
            if (const auto& from = rows.plane[plane]; !from.empty())
                seen[i][plane] = double{from[RowAt(i, from.size())].mean} / mStep;
    return seen;
}

GradientFit FitFrame(const std::vector<GradientKey>& keys, const GradientRows& seen) {
    GradientFit best;
    double least = -1;
    for (std::size_t at = 0; at + 1 < keys.size(); ++at) {
        const GradientKey& from = keys[at];
        const GradientKey& to = keys[at + 1];
        double along = 0, way = 0;
        for (std::size_t i = 0; i < kRows; ++i) {
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const double step = to.rows[i][plane] - from.rows[i][plane];
                along += (seen[i][plane] - from.rows[i][plane]) * step;
                way += step * step;
            }
        }
        // A reading may lie a little outside the clip by its error.
        const double begin = at == 0 ? -1.0 / static_cast<double>(to.frame - from.frame) : 0;
        const double end = at + 2 == keys.size() ? 1 - begin : 1;
        const double share = way == 0 ? 0 : std::clamp(along / way, std::min(begin, 0.0), end);
        double error = 0;
        for (std::size_t i = 0; i < kRows; ++i) {
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const double expected =
                    from.rows[i][plane] + (to.rows[i][plane] - from.rows[i][plane]) * share;
                error += (seen[i][plane] - expected) * (seen[i][plane] - expected);
            }
        }
        if (least >= 0 && error >= least) continue;
        least = error;
        const auto frames = static_cast<double>(to.frame - from.frame);
        best.frame = static_cast<double>(from.frame) + share * frames;
        best.motion = std::sqrt(way / (3 * kRows)) / frames;
    }
    best.error = std::sqrt(least / (3 * kRows));
    return best;
}

} // namespace corvane
