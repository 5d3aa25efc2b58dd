#include <cmath>

#include <gtest/gtest.h>

#include "Compare/ColorSpace.h"
#include "Compare/ExpectedRows.h"
#include "Services/Raster/PixelFormats.h"
#include "Tests/Export/TestClips.h"

namespace corvane {
namespace {

// Pairs of table 1 in Sharma, Wu and Dalal, "The CIEDE2000 color-difference formula", 2005: the ones about
// which implementations go wrong.
TEST(ColorSpace, DeltaEIsThePublishedOne) {
    const struct {
        Lab a, b;
        double deltaE;
    } rows[] = {{{50, 2.6772, -79.7751}, {50, 0, -82.7485}, 2.0425},
                {{50, 0, 0}, {50, -1, 2}, 2.3669},
                {{50, 2.49, -0.001}, {50, -2.49, 0.0009}, 7.1792},
                {{50, 2.49, -0.001}, {50, -2.49, 0.0011}, 7.2195},
                {{50, 2.5, 0}, {73, 25, -18}, 27.1492},
                {{60.2574, -34.0099, 36.2677}, {60.4626, -34.1751, 39.4387}, 1.2644},
                {{6.7747, -0.2908, -2.4247}, {5.8714, -0.0985, -2.2286}, 0.6377},
                {{2.0776, 0.0795, -1.135}, {0.9033, -0.0636, -0.5514}, 0.9082}};
    for (const auto& row : rows) {
        EXPECT_NEAR(DeltaE2000(row.a, row.b), row.deltaE, 5e-5) << row.a[0] << ' ' << row.b[2];
        EXPECT_NEAR(DeltaE2000(row.b, row.a), row.deltaE, 5e-5) << row.a[0] << ' ' << row.b[2];
    }
}

TEST(ColorSpace, CodesAreThePublishedOnes) {
    const struct {
        SampleCoding coding;
        Color color;
        std::array<int, 3> codes;
    } rows[] = {{{true, kMatrix601, false, 8}, {1, 0, 0, 1}, {81, 90, 240}},
                {{true, kMatrix709, false, 8}, {1, 0, 0, 1}, {63, 102, 240}},
                {{true, kMatrix709, false, 10}, {0, 0, 1, 1}, {127, 960, 471}},
                {{true, kMatrix2020, false, 10}, {1, 0, 0, 1}, {294, 387, 960}},
                {{true, kMatrix601, true, 8}, {1, 0, 0, 1}, {76, 85, 256}},
                {{false, kMatrix709, true, 10}, {1, 0.5, 0, 1}, {1023, 512, 0}}};
    for (const auto& row : rows) {
        const Codes codes = Encode(row.color, row.coding);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(std::lround(codes[i]), row.codes[i]) << i;
        const Color back = Decode(codes, row.coding);
        for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(back[i], row.color[i], 1e-12);
    }
}

// A swapped component, a wrong matrix, forgotten alpha or transfer of any format that frames arrive in.
TEST(ExpectedRows, AreTheClipsColorsInEveryFormat) {
    for (const PixelFormatRow& format : PixelFormatTable()) {
        const auto clip =
            testing::MakeClip({.pixelFormat = format.code, .width = 64, .height = 33, .alpha = 0.8});
        const StreamFacts facts = FactsOf(*clip, 1);
        const Frame frame = clip->GetFrame(0);
        ExpectedRows rows;
        rows.Read(frame.View(), facts);
        ASSERT_EQ(rows.Height(), 33u);
        EXPECT_TRUE(rows.FieldsAreSolid());
        const double step = facts.IsFloat() ? 1e-5 : 2.0 / 255;
        const Color upper{0.95, 0.1, 0.3, facts.HasAlpha() ? 0.8 : 1.0}, lower{0.05, 0.8, 0.55, 1.0};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(rows.At(30)[i], upper[i], step) << format.name << ' ' << i;
            EXPECT_NEAR(rows.Between(31.4, 1)[i], lower[i], step) << format.name << ' ' << i;
        }
    }
}

} // namespace
} // namespace corvane
