// Faults sought: rates that do not come out in lowest terms, 64-bit overflow, poor approximations, touched
// outputs.
#include "Services/Frames/Suites.h"
#include "lummediatypes.h"

#include <gtest/gtest.h>

namespace {

using corvane::LegacySuite2;

using Terms = std::pair<std::uint32_t, std::uint32_t>;

/// Scale and sample size of a rate; as they were, 7 and 9, if there is none.
Terms RateOf(std::int64_t ticks) {
    Terms rate{7, 9};
    EXPECT_EQ(LegacySuite2()->TicksToRate(ticks, &rate.first, &rate.second) < 0, ticks <= 0);
    return rate;
}

std::int64_t TicksOf(const Terms& rate) {
    std::int64_t ticks = 7;
    EXPECT_EQ(LegacySuite2()->RateToTicks(rate.first, rate.second, &ticks), 0);
    return ticks;
}

TEST(LegacySuite, RatesComeOutExactAndGoBack) {
    const std::pair<std::int64_t, Terms> kRows[] = {
        {8475667200, {30000, 1001}}, {4237833600, {60000, 1001}}, {10594584000, {24000, 1001}},
        {10160640000, {25, 1}},      {20321280000, {25, 2}},      {254016000000, {1, 1}},
        {508032000000, {1, 2}},      {254016000, {1000, 1}},
    };
    for (const auto& [ticks, rate] : kRows) {
        EXPECT_EQ(RateOf(ticks), rate);
        EXPECT_EQ(TicksOf(rate), ticks);
    }
    EXPECT_EQ(TicksOf({13, 1}), 19539692308) << "and 9 thirteenths less";
    EXPECT_EQ(TicksOf({1, 4294967295u}), std::numeric_limits<std::int64_t>::max());
}

// The nearest fraction with 32-bit terms: its error is below one part in 2^32 of a step of either term.
TEST(LegacySuite, RatesOutsideTheTermsAreTheNearestThatFit) {
    EXPECT_EQ(RateOf(1), Terms(4294967295u, 1));
    EXPECT_EQ(RateOf(10160639999), Terms(25, 1)) << "nearer than 4294967276/171798691";
    for (const std::int64_t ticks : {60LL, 8475667201LL, 10160639999LL, 254016000001LL, 508032000002LL,
                                     123456789012347LL, 9223372036854775807LL}) {
        const auto [scale, sampleSize] = RateOf(ticks);
        const long double exact = 254016000000.0L / static_cast<long double>(ticks);
        const long double error = std::abs(static_cast<long double>(scale) / sampleSize - exact);
        EXPECT_LT(error / exact, 1.0L / 4294967295.0L * 1.01L) << ticks;
    }
}

TEST(LegacySuite, WithoutARateTheOutputsStayAsTheyWere) {
    for (const std::int64_t ticks :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()})
        EXPECT_EQ(RateOf(ticks), Terms(7, 9));
    std::int64_t ticks = 7;
    LegacySuite2()->RateToTicks(0, 1, &ticks);
    EXPECT_EQ(ticks, 0);
}

} // namespace
