// Faults sought: rates that do not come out in lowest terms, 64-bit overflow, poor approximations, touched
// outputs.
#include "Services/Suites.h"
#include "lummediatypes.h"

#include <gtest/gtest.h>

namespace {

using corvane::LegacySuite2;

TEST(LegacySuite, RatesComeOutExactAndGoBack) {
    struct Row {
        std::int64_t ticks;
        std::uint32_t scale, sampleSize;
    };
    for (const Row& row : {Row{8475667200, 30000, 1001}, Row{4237833600, 60000, 1001},
                           Row{10594584000, 24000, 1001}, Row{10160640000, 25, 1}, Row{20321280000, 25, 2},
                           Row{254016000000, 1, 1}, Row{508032000000, 1, 2}, Row{254016000, 1000, 1}}) {
        std::uint32_t scale = 0, sampleSize = 0;
        ASSERT_EQ(LegacySuite2()->TicksToRate(row.ticks, &scale, &sampleSize), 0);
        EXPECT_EQ(scale, row.scale);
        EXPECT_EQ(sampleSize, row.sampleSize);
        std::int64_t ticks = 0;
        ASSERT_EQ(LegacySuite2()->RateToTicks(scale, sampleSize, &ticks), 0);
        EXPECT_EQ(ticks, row.ticks);
    }
}

// The nearest fraction with 32-bit terms: its error is below one part in 2^32 of a step of either term.
TEST(LegacySuite, RatesOutsideTheTermsAreTheNearestThatFit) {
    for (const std::int64_t ticks : {1LL, 59LL, 8475667201LL, 10160639999LL, 254016000001LL, 508032000002LL,
                                     123456789012347LL, 9223372036854775807LL}) {
        std::uint32_t scale = 0, sampleSize = 0;
        ASSERT_EQ(LegacySuite2()->TicksToRate(ticks, &scale, &sampleSize), 0);
        ASSERT_GT(scale, 0u);
        ASSERT_GT(sampleSize, 0u);
        const long double exact = 254016000000.0L / static_cast<long double>(ticks);
        if (exact > 4294967295.0L) {
            EXPECT_EQ(scale, 4294967295u);
            EXPECT_EQ(sampleSize, 1u);
            continue;
        }
        const long double error = std::abs(static_cast<long double>(scale) / sampleSize - exact);
        EXPECT_LT(error / exact, 1.0L / 4294967295.0L * 1.01L) << ticks;
        std::int64_t back = 0;
        LegacySuite2()->RateToTicks(scale, sampleSize, &back);
        EXPECT_LE(std::abs(static_cast<long double>(back) - static_cast<long double>(ticks)),
                  0.5L + static_cast<long double>(ticks) / 4294967295.0L);
    }
}

TEST(LegacySuite, WithoutARateTheOutputsStayAsTheyWere) {
    for (const std::int64_t ticks :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        std::uint32_t scale = 7, sampleSize = 9;
        EXPECT_LT(LegacySuite2()->TicksToRate(ticks, &scale, &sampleSize), 0);
        EXPECT_EQ(scale, 7u);
        EXPECT_EQ(sampleSize, 9u);
    }
    std::int64_t ticks = 7;
    LegacySuite2()->RateToTicks(0, 1, &ticks);
    EXPECT_EQ(ticks, 0);
    LegacySuite2()->RateToTicks(1, 4294967295u, &ticks);
    EXPECT_EQ(ticks, std::numeric_limits<std::int64_t>::max());
}

} // namespace
