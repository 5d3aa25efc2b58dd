// Faults sought: a shortcut whose bytes differ from the conversion of every pixel, fields mixed by
// subsampling, a matrix or range that is not the published one, planes of odd sizes written past their end,
// what is left of an earlier frame.
#include "Export/Picture/PictureConverter.h"

#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "Export/Picture/PackedReader.h"
#include "TestFrames.h"
#include "Tests/Export/TestClips.h"

namespace {

using corvane::FieldOrder;
using corvane::PictureConverter;
using corvane::PlanarFormat;
using corvane::testing::TestFrame;

/// Planes with guard bytes after each row.
struct Planes {
    Planes(const PlanarFormat& format, std::uint32_t width, std::uint32_t height) {
        for (std::size_t plane = 0; plane < static_cast<std::size_t>(format.Planes()); ++plane) {
            const int p = static_cast<int>(plane);
            row[plane] = format.PlaneWidth(p, width) * format.SampleBytes();
            picture.stride[plane] = static_cast<std::ptrdiff_t>(row[plane] + 6);
            bytes[plane].assign((row[plane] + 6) * format.PlaneHeight(p, height), std::byte{0xCD});
            picture.plane[plane] = bytes[plane].data();
        }
    }
    int At(std::size_t plane, std::size_t x, std::size_t y) const {
        return std::to_integer<int>(bytes[plane][y * (row[plane] + 6) + x]);
    }
    bool GuardsIntact() const {
        for (std::size_t plane = 0; plane < 4; ++plane)
            for (std::size_t at = 0; at < bytes[plane].size(); ++at)
                if (at % (row[plane] + 6) >= row[plane] && bytes[plane][at] != std::byte{0xCD}) return false;
        return true;
    }

    std::vector<std::byte> bytes[4];
    std::size_t row[4] = {};
    corvane::PlanarPicture picture;
    corvane::PaintedRows painted;
};

PlanarFormat Format(bool yCbCr, int bits, int subsampleW, int subsampleH, bool alpha = false) {
    return {.yCbCr = yCbCr, .bits = bits, .subsampleW = subsampleW, .subsampleH = subsampleH, .alpha = alpha};
}

TEST(PictureConverter, TheShortcutGivesTheBytesOfTheWholeConversion) {
    const PlanarFormat formats[] = {Format(true, 8, 1, 1),         Format(true, 10, 1, 0),
                                    Format(true, 16, 0, 0, true),  Format(true, 10, 1, 1),
                                    Format(false, 16, 0, 0, true), Format(true, 8, 2, 0)};
    const RK_PixelFormat sources[] = {kRK_4444, kRK_4444 | kRK_YCbCr, kRK_4444 | kRK_Float,
                                      kRK_4444 | kRK_Float | kRK_Linear,
                                      kRK_4444 | kRK_AlphaFirst | kRK_Premultiplied};
    struct Size {
        std::uint32_t width, height;
    };
    // One after the other into the same memory.
    const corvane::Box boxes[] = {{0, 0, 0, 0},  {20, 6, 70, 23},    {60, 1, 63, 2}, {50, 1, 63, 9},
                                  {3, 5, 40, 9}, {130, 20, 171, 35}, {0, 0, 0, 0}};
    for (const Size size : {Size{320, 64}, Size{171, 35}, Size{320, 66}, Size{47, 33}})
        for (const RK_PixelFormat source : sources)
            for (const FieldOrder order : {FieldOrder::kProgressive, FieldOrder::kLowerFirst})
                for (const PlanarFormat& format : formats) {
                    TestFrame frame(size.width, size.height, source);
                    frame.Facts().order = order;
                    PictureConverter converter(frame.Facts(), format);
                    Planes quick(format, size.width, size.height);
                    for (const corvane::Box& box : boxes) {
                        frame.Draw(box.left, box.top, box.right, box.bottom, box.left / 50);
                        Planes whole(format, size.width, size.height);
                        converter.Convert(frame.View(), quick.picture, quick.painted);
                        converter.ConvertWhole(frame.View(), whole.picture);
                        for (int plane = 0; plane < format.Planes(); ++plane)
                            ASSERT_TRUE(quick.bytes[plane] == whole.bytes[plane])
                                << size.width << "x" << size.height << " source " << source << " box at "
                                << box.left << " order " << int(order) << " plane " << plane << " bits "
                                << format.bits;
                        ASSERT_TRUE(quick.GuardsIntact());
                    }
                }
}

TEST(PackedReader, ReadsFramesOfOtherSizesAsTheWholeConversion) {
    for (const RK_PixelFormat source : {kRK_4444 | kRK_YCbCr, kRK_4444 | kRK_Float | kRK_Premultiplied}) {
        corvane::PackedReader reader(TestFrame(9, 9, source).Facts(), {{2, 1, 0, 3}, 4, 8, false});
        for (const auto& [width, height] : {std::pair(300u, 64u), {70u, 20u}, {171u, 35u}, {1u, 1u}}) {
            TestFrame frame(width, height, source);
            frame.Facts().tags = TestFrame(9, 9, source).Facts().tags;
            frame.Draw(20, 3, width - width / 9, 19);
            const PlanarFormat format = Format(false, 8, 0, 0, true);
            Planes whole(format, width, height);
            PictureConverter(frame.Facts(), format).ConvertWhole(frame.View(), whole.picture);
            reader.Begin(frame.View());
            std::vector<std::byte> row(width * 4);
            for (std::uint32_t y = 0; y < height; ++y) {
                reader.Read(y, width, row.data());
                for (std::uint32_t i = 0; i < width * 4; ++i)
                    ASSERT_EQ(std::to_integer<int>(row[i]), whole.At(i % 4 < 3 ? 2 - i % 4 : 3, i / 4, y))
                        << width << " row " << y << " byte " << i;
            }
        }
    }
}

TEST(PictureConverter, ChromaOfAFieldIsMadeOfThatFieldAlone) {
    for (const std::uint32_t height : {32u, 34u, 33u}) {
        TestFrame frame(96, height, kRK_4444);
        frame.Facts().order = FieldOrder::kUpperFirst;
        for (std::uint32_t y = 0; y < height; ++y)
            for (std::uint32_t x = 0; x < 96; ++x) frame.SetBytes(x, y, y % 2 ? 0xFF0000FFu : 0xFFFF0000u);
        const PlanarFormat format = Format(true, 8, 1, 1);
        Planes planes(format, 96, height);
        PictureConverter(frame.Facts(), format).Convert(frame.View(), planes.picture, planes.painted);
        for (std::uint32_t y = 0; y < (height + 1) / 2; ++y)
            EXPECT_EQ(planes.At(2, 20, y), planes.At(2, 20, y % 2)) << "row " << y << " of " << height;
        EXPECT_GT(std::abs(planes.At(2, 20, 0) - planes.At(2, 20, 1)), 100);
    }
}

TEST(PictureConverter, ChromaLiesOnTheLeftAndWhatIsNoNumberHarmsNoNeighbor) {
    const PlanarFormat format = Format(true, 8, 1, 1);
    std::vector<std::byte> chroma[2];
    for (const bool number : {false, true}) {
        TestFrame frame(96, 4, kRK_4444 | kRK_Float);
        for (std::uint32_t i = 0; i < 96 * 4; ++i)
            frame.SetFloats(i % 96, i / 96,
                            {i % 96 > 40 ? 1.0f : 0.0f, 0.0f, i % 96 > 40 ? 0.0f : 1.0f, 1.0f});
        frame.SetFloats(70, 1, {number ? 0.0f : std::nanf(""), 0.0f, 0.0f, 1.0f});
        Planes planes(format, 96, 4);
        PictureConverter(frame.Facts(), format).Convert(frame.View(), planes.picture, planes.painted);
        EXPECT_GT(planes.At(2, 20, 0), 190) << "three quarters of red up to column 40, one of blue";
        chroma[number] = planes.bytes[1];
    }
    EXPECT_TRUE(chroma[0] == chroma[1]);
}

TEST(TagsFor, FollowTheRasterAndKeepTheMatrixOfYCbCr) {
    struct Row {
        std::uint32_t height;
        corvane::Rate rate;
        RK_PixelFormat format;
        std::array<int, 3> tags; // matrix, primaries, transfer
    };
    const Row rows[] = {{1080, {25, 1}, kRK_4444, {1, 1, 1}},
                        {576, {25, 1}, kRK_4444, {5, 5, 6}},
                        {480, {30000, 1001}, kRK_4444, {6, 6, 6}},
                        {300, {25, 2}, kRK_4444, {5, 5, 6}},
                        {300, {24000, 1001}, kRK_4444, {6, 6, 6}},
                        {300, {75, 1}, kRK_4444, {6, 6, 6}},
                        {1080, {25, 1}, kRK_4444 | kRK_YCbCr, {6, 1, 1}},
                        {576, {25, 1}, kRK_4444 | kRK_YCbCr | kRK_709, {1, 5, 6}}};
    for (const Row& row : rows) {
        const corvane::ColorTags tags =
            corvane::TagsFor({.size = {720, row.height}, .rate = row.rate, .raster = row.format});
        EXPECT_EQ((std::array{tags.matrix, tags.primaries, tags.transfer}), row.tags) << row.height;
    }
}

TEST(FactsOf, AreWhatFilesCanSay) {
    // A field order without a name, terms with a common factor, and a rate with a term of 32 bits.
    const auto clip = corvane::testing::MakeClip(
        {.parNumerator = 80, .parDenominator = 66, .fieldType = 3, .ticksPerFrame = 60});
    const corvane::StreamFacts facts = corvane::FactsOf(*clip, 1);
    EXPECT_EQ(facts.order, FieldOrder::kUpperFirst);
    EXPECT_EQ(facts.aspect, (corvane::PixelAspect{40, 33}));
    EXPECT_EQ(facts.rate, (corvane::Rate{2147483647, 1}));
    EXPECT_EQ(corvane::Reduced(corvane::PixelAspect{1, 4294967295}).numerator, 1u);
}

} // namespace
