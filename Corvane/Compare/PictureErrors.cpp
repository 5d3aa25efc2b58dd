#include "PictureErrors.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace corvane {
namespace {

/// The largest code value.
double Peak(const PlanarFormat& format) {
    return static_cast<double>((1u << format.bits) - 1);
}

struct RowErrors {
    std::uint64_t squares = 0;
    std::uint32_t largest = 0;
};

template <class Sample>
RowErrors Differences(const std::byte* a, const std::byte* b, std::uint32_t count) {
    const auto* const left = reinterpret_cast<const Sample*>(a);
    const auto* const right = reinterpret_cast<const Sample*>(b);
    RowErrors errors;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto off = static_cast<std::uint32_t>(std::abs(int{left[i]} - int{right[i]}));
        errors.squares += std::uint64_t{off} * off;
        errors.largest = std::max(errors.largest, off);
    }
    return errors;
}

} // namespace

void PictureErrors::AddRows(const PictureRows& rows, const RowCodes& codes, std::uint32_t definedRows) {
    const double peak = Peak(rows.format);
    for (std::size_t at = 0; at < 4; ++at) {
        const std::vector<RowSamples>& measured = rows.plane[at];
        const std::size_t defined = rows.format.PlaneHeight(static_cast<int>(at), definedRows);
        const std::size_t count = std::min({measured.size(), codes[at].size(), defined});
        Plane& plane = mPlanes[at];
        for (std::size_t y = 0; y < count; ++y) {
            const RowSamples& row = measured[y];
            const int code = codes[at][y];
            const double off = static_cast<double>(row.mean) - code;
            plane.squares +=
                (off * off + static_cast<double>(row.variance)) * rows.columns[at] / (peak * peak);
            const int largest = std::max(std::abs(row.most - code), std::abs(row.least - code));
            plane.largest = std::max(plane.largest, static_cast<std::uint32_t>(largest));
        }
        plane.samples += static_cast<double>(count) * rows.columns[at];
    }
}

void PictureErrors::AddPixels(const VideoPicture& picture, const PlanarPicture& expected, bool alpha,
                              std::uint32_t right, std::uint32_t definedRows) {
    const PlanarFormat& format = picture.format;
    const double peak = Peak(format);
    for (int plane = 0; plane < (alpha ? 4 : 3); ++plane) {
        Plane& sums = mPlanes[static_cast<std::size_t>(plane)];
        const std::uint32_t columns = format.PlaneWidth(plane, right);
        const std::uint32_t rows = format.PlaneHeight(plane, definedRows);
        for (std::uint32_t y = 0; y < rows; ++y) {
            const auto differences = format.bits > 8 ? Differences<std::uint16_t> : Differences<std::uint8_t>;
            const RowErrors row = differences(picture.Row(plane, y), expected.Row(plane, y), columns);
            sums.squares += static_cast<double>(row.squares) / (peak * peak);
            sums.largest = std::max(sums.largest, row.largest);
        }
        sums.samples += static_cast<double>(rows) * columns;
    }
}

void PictureErrors::Add(const PictureErrors& other) {
    for (std::size_t at = 0; at < 4; ++at) {
        mPlanes[at].squares += other.mPlanes[at].squares;
        mPlanes[at].samples += other.mPlanes[at].samples;
        mPlanes[at].largest = std::max(mPlanes[at].largest, other.mPlanes[at].largest);
    }
}

std::array<PlaneErrors, 4> PictureErrors::Get() const {
    std::array<PlaneErrors, 4> errors;
    for (std::size_t at = 0; at < 4; ++at) {
        const Plane& plane = mPlanes[at];
        errors[at].measured = plane.samples > 0;
        errors[at].largest = plane.largest;
        if (plane.largest != 0) errors[at].psnr = 10 * std::log10(plane.samples / plane.squares);
    }
    return errors;
}

double PictureErrors::MeanSquare() const {
    double squares = 0, samples = 0;
    for (const Plane& plane : mPlanes) {
        squares += plane.squares;
        samples += plane.samples;
    }
    return samples > 0 ? squares / samples : 0;
}

} // namespace corvane
