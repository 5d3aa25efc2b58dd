#include "PictureRows.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace corvane {
namespace {

// The loops are written so that compilers make vector code of them.

struct Sums {
    double over = 0; // what samples are above a base, and the squares of it
    double squares = 0;
};

template <class Sample>
void FindLimits(const Sample* samples, std::size_t count, RowSamples& row) {
    // Signed words: there is vector code for these and for bytes without a sign.
    using Compared = std::conditional_t<sizeof(Sample) == 1, std::uint8_t, std::int16_t>;
    constexpr int kShift = sizeof(Sample) == 1 ? 0 : 0x8000;
    Compared least = std::numeric_limits<Compared>::max(), most = std::numeric_limits<Compared>::min();
    for (std::size_t i = 0; i < count; ++i) {
        const auto sample = static_cast<Compared>(samples[i] - kShift);
        least = std::min(least, sample);
        most = std::max(most, sample);
    }
    row.least = static_cast<std::uint16_t>(least + kShift);
    row.most = static_cast<std::uint16_t>(most + kShift);
}

template <class Sample>
void AddSums(const Sample* samples, std::size_t count, std::int32_t base, Sums& sums) {
    std::int32_t over = 0, squares = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto each = static_cast<std::int16_t>(samples[i] - base);
        over += each;
        squares += each * each;
    }
    sums.over += over;
    sums.squares += squares;
}

template <class Sample>
RowSamples MeasureRow(const std::byte* start, std::size_t count) {
    const auto* const samples = reinterpret_cast<const Sample*>(start);
    RowSamples row;
    FindLimits(samples, count, row);
    row.mean = row.least;
    if (row.least == row.most) return row;
    // From the middle no sample is further than a word holds, and so many squares fit into 31 bits.
    const std::int32_t base = (row.least + row.most + 1) / 2;
    const auto reach = static_cast<std::size_t>(base - row.least);
    const std::size_t block = std::min<std::size_t>(4096, 0x7FFF'FFFF / (reach * reach));
    Sums sums;
    for (std::size_t i = 0; i < count; i += block)
        AddSums(samples + i, std::min(block, count - i), base, sums);
    const auto n = static_cast<double>(count);
    const double over = sums.over / n;
    row.mean = static_cast<float>(base + over);
    row.variance = static_cast<float>(std::max(sums.squares / n - over * over, 0.0));
    return row;
}

} // namespace

void MeasureRows(const VideoPicture& picture, std::uint32_t left, std::uint32_t right, PictureRows& rows) {
    rows.format = picture.format;
    for (int plane = 0; plane < 4; ++plane) {
        std::vector<RowSamples>& measured = rows.plane[static_cast<std::size_t>(plane)];
        if (plane >= picture.format.Planes()) {
            measured.clear();
            continue;
        }
        measured.resize(picture.format.PlaneHeight(plane, picture.size.height));
        const std::uint32_t end = picture.format.PlaneWidth(plane, right);
        const std::uint32_t start = std::min(picture.format.PlaneWidth(plane, left), end - 1);
        rows.columns[static_cast<std::size_t>(plane)] = end - start;
        const std::size_t skipped = start * picture.format.SampleBytes();
        const auto measure = picture.format.bits > 8 ? MeasureRow<std::uint16_t> : MeasureRow<std::uint8_t>;
        for (std::uint32_t y = 0; y < measured.size(); ++y)
            measured[y] = measure(picture.Row(plane, y) + skipped, end - start);
    }
}

} // namespace corvane
