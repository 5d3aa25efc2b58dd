// Faults sought: sums that overflow, samples at the ends left out, columns of the wrong plane.
#include "Compare/PictureRows.h"

#include <algorithm>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace corvane;

TEST(PictureRows, AreWhatASlowLoopMeasures) {
    struct Row {
        int bits;
        std::uint32_t width, left, right;
        int spread; // of the samples around the middle
    };
    constexpr Row kRows[] = {{8, 4103, 0, 4103, 255},    {8, 1, 0, 1, 3},
                             {8, 300, 17, 299, 0},       {10, 9001, 5, 9000, 40},
                             {16, 5000, 1, 4999, 65535}, {16, 33, 0, 33, 2000}};
    std::mt19937 random(1);
    for (const auto& [bits, width, left, right, spread] : kRows) {
        VideoPicture picture;
        picture.format.bits = bits;
        picture.format.subsampleW = 1;
        picture.size = {width, 3};
        std::vector<std::uint16_t> samples(width);
        const int low = ((1 << bits) - 1 - spread) / 2;
        for (auto& sample : samples)
            sample = static_cast<std::uint16_t>(low + (spread ? int(random() % unsigned(spread + 1)) : 0));
        std::vector<std::uint8_t> bytes(samples.begin(), samples.end());
        const void* const start = bits > 8 ? static_cast<const void*>(samples.data()) : bytes.data();
        picture.plane.fill(static_cast<const std::byte*>(start)); // one row for all, by a stride of 0
        PictureRows rows;
        MeasureRows(picture, left, right, rows);
        for (const auto& [plane, from, to] :
             {std::tuple(0, left, right), {2, (left + 1) / 2, (right + 1) / 2}}) {
            const auto first = samples.begin() + from, last = samples.begin() + std::max(to, from + 1);
            double sum = 0, squares = 0;
            for (auto at = first; at != last; ++at) sum += *at;
            const double count = static_cast<double>(last - first), mean = sum / count;
            for (auto at = first; at != last; ++at) squares += (*at - mean) * (*at - mean);
            ASSERT_EQ(rows.plane[std::size_t(plane)].size(), 3u);
            const RowSamples& row = rows.plane[std::size_t(plane)][2];
            EXPECT_EQ(row.least, *std::min_element(first, last)) << bits << ' ' << width;
            EXPECT_EQ(row.most, *std::max_element(first, last)) << bits << ' ' << width;
            EXPECT_NEAR(row.mean, mean, 1e-6 * mean) << bits << ' ' << width;
            EXPECT_NEAR(row.variance, squares / count, 1e-5 * squares / count) << bits << ' ' << width;
        }
    }
}

} // namespace
