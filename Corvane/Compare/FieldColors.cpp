#include "FieldColors.h"

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

// In steps of 8 bits: how far rows may be off one color beyond what codecs do to the clip's own, and pictures
// off any mixture of both fields.
constexpr double kRough = 12;
constexpr double kFar = 24;

} // namespace

FieldColors::Look FieldColors::LookOf(const PictureRows& rows, const Placement& placement) {
    Look look;
    const double step = std::ldexp(1.0, 8 - rows.format.bits);
    for (int plane = 0; plane < 3; ++plane) {
        const auto& samples = rows.plane[static_cast<std::size_t>(plane)];
        if (samples.empty()) continue;
        const auto end = static_cast<std::uint32_t>(samples.size());
        const std::uint32_t top = std::min(rows.format.PlaneHeight(plane, placement.active.top), end - 1);
        const std::uint32_t bottom =
            std::clamp(rows.format.PlaneHeight(plane, placement.active.bottom), top + 1, end);
        std::array<double, 2> sum{}, count{};
        double variance = 0;
        for (std::uint32_t y = top; y < bottom; ++y) {
            sum[y % 2] += double{samples[y].mean};
            count[y % 2] += 1;
            variance += double{samples[y].variance};
        }
        for (std::size_t parity = 0; parity < 2; ++parity)
            look.mean[parity][static_cast<std::size_t>(plane)] =
                step * sum[parity] / std::max(count[parity], 1.0);
        if (plane == (rows.format.yCbCr ? 0 : 1)) look.variance = step * step * variance / (bottom - top);
    }
    return look;
}

void FieldColors::Learn(const PictureRows& rows, const Placement& placement) {
    const Look look = LookOf(rows, placement);
    ++mPictures;
    mSums.variance += look.variance;
    for (std::size_t parity = 0; parity < 2; ++parity)
        for (std::size_t plane = 0; plane < 3; ++plane) mSums.mean[parity][plane] += look.mean[parity][plane];
}

bool FieldColors::AreOthers(const PictureRows& rows, const Placement& placement) const {
    if (mPictures == 0) return false;
    const Look look = LookOf(rows, placement);
    const auto count = static_cast<double>(mPictures);
    if (std::sqrt(look.variance) > kRough + 2 * std::sqrt(mSums.variance / count)) return true;
    // The nearest mixture of both fields.
    std::array<double, 3> lower{}, apart{}, found{};
    double length = 1e-9, along = 0;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        lower[plane] = mSums.mean[1][plane] / count;
        apart[plane] = mSums.mean[0][plane] / count - lower[plane];
        found[plane] = (look.mean[0][plane] + look.mean[1][plane]) / 2 - lower[plane];
        length += apart[plane] * apart[plane];
        along += apart[plane] * found[plane];
    }
    const double share = std::clamp(along / length, 0.0, 1.0);
    double distance = 0;
    for (std::size_t plane = 0; plane < 3; ++plane)
        distance += std::pow(found[plane] - share * apart[plane], 2);
    return std::sqrt(distance) > kFar;
}

} // namespace corvane
