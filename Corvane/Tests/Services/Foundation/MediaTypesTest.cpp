// Faults sought: traps and wrap-around at the ends of the range, rounding the wrong way, ratios compared by
// terms.
#include "lummediatypes.h"

#include <gtest/gtest.h>

namespace {

using namespace lummediatypes;

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

TEST(TickTime, ToFrameRoundsDownAndNeverTraps) {
    struct Row {
        std::int64_t ticks, ticksPerFrame, frame;
    };
    for (const Row& row : {Row{0, 10, 0}, Row{9, 10, 0}, Row{10, 10, 1}, Row{-1, 10, -1}, Row{-10, 10, -1},
                           Row{-11, 10, -2}, Row{25, 0, 0}, Row{25, -10, -3}, Row{-25, -10, 2},
                           Row{kLowest, -1, kHighest}, Row{kLowest, 1, kLowest}, Row{kHighest, 1, kHighest}})
        EXPECT_EQ(TickTime(row.ticks).ToFrame64(FrameRate(row.ticksPerFrame)), row.frame)
            << row.ticks << " / " << row.ticksPerFrame;
    EXPECT_EQ(TickTime((std::int64_t{1} << 32) + 5).ToFrame32(FrameRate(1)), 5);
    EXPECT_EQ(TickTime(kHighest).ToFrame32(FrameRate(1)), -1);
}

TEST(TickTime, AlignGoesToTheNearestFrameAndHalfGoesUp) {
    struct Row {
        std::int64_t ticks, ticksPerFrame, aligned;
    };
    for (const Row& row :
         {Row{14, 10, 10}, Row{15, 10, 20}, Row{16, 10, 20}, Row{-14, 10, -10}, Row{-15, 10, -10},
          Row{-16, 10, -20}, Row{16, -10, 20}, Row{7, 0, 7}, Row{kHighest, kHighest, kHighest},
          Row{kLowest, 3, kLowest}, Row{kHighest, 2, kHighest}}) {
        TickTime time(row.ticks);
        EXPECT_EQ(time.AlignToFrame(FrameRate(row.ticksPerFrame)).GetTicks(), row.aligned)
            << row.ticks << " to " << row.ticksPerFrame;
    }
}

TEST(TickTime, AddFramesSaturates) {
    EXPECT_EQ(TickTime(5).AddFrames(3, FrameRate(10)).GetTicks(), 35);
    EXPECT_EQ(TickTime(5).AddFrames(-3, FrameRate(10)).GetTicks(), -25);
    EXPECT_EQ(TickTime(1).AddFrames(kHighest, FrameRate(kHighest)).GetTicks(), kHighest);
    EXPECT_EQ(TickTime(-1).AddFrames(kHighest, FrameRate(kLowest)).GetTicks(), kLowest);
}

TEST(PixelAspectRatio, ComparesRatiosAndWithoutADenominatorTerms) {
    EXPECT_EQ(PixelAspectRatio(10, 11), PixelAspectRatio(20, 22));
    EXPECT_NE(kPixelAspectRatio_DVNTSC, kPixelAspectRatio_DVNTSC_Incorrect);
    EXPECT_EQ(PixelAspectRatio(4294967295u, 4294967294u), PixelAspectRatio(4294967295u, 4294967294u));
    EXPECT_NE(PixelAspectRatio(4294967295u, 4294967294u), PixelAspectRatio(4294967294u, 4294967293u));
    EXPECT_NE(PixelAspectRatio(0, 0), PixelAspectRatio(1, 1));
    EXPECT_NE(PixelAspectRatio(1, 0), PixelAspectRatio(2, 0));
    EXPECT_EQ(PixelAspectRatio(0, 0), PixelAspectRatio(0, 0));
    EXPECT_EQ(PixelAspectRatio(), kPixelAspectRatio_Square);
}

} // namespace
