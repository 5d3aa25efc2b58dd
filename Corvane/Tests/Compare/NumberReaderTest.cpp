// Faults sought: digits taken for others or made up, a number cut short, a box found at the wrong place or
// scale, fields taken for one another, two causes told for one.
#include <cstdio>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Compare/NumberReader.h"
#include "Compare/Placement.h"
#include "Rasterkit.h"
#include "Tests/Export/TestClips.h"
#include "Tests/TestFolder.h"

namespace {

using namespace corvane;
using corvane::testing::OutputOf;
using corvane::testing::TestFolder;

constexpr Size kSize{720, 576};
constexpr std::int32_t kNumbers[] = {0, 9, 38, 1047, -25, 2147483640, 611};

// A frame as the plug-in makes it: fields of two colors, and a number.
std::vector<std::uint32_t> FrameOf(std::int32_t number) {
    std::vector<std::uint32_t> pixels(std::size_t{kSize.width} * kSize.height);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = i / kSize.width % 2 == 0 ? 0xffe61a33 : 0xff1a4de6;
    RK_PrintNum(pixels.data(), kSize.width * 4, kRK_4444, kSize.width, kSize.height, number, 0.12f,
                {0.05f, 0.05f}, kRK_PrintBoxed);
    return pixels;
}

// Its green channel as a picture of luma.
struct LumaPicture {
    std::vector<std::uint8_t> samples;

    explicit LumaPicture(const std::vector<std::uint32_t>& pixels) {
        for (const std::uint32_t pixel : pixels) samples.push_back(static_cast<std::uint8_t>(pixel >> 8));
    }
    VideoPicture View() const {
        VideoPicture picture;
        picture.size = kSize;
        picture.plane[0] = reinterpret_cast<const std::byte*>(samples.data());
        picture.stride[0] = kSize.width;
        return picture;
    }
};

const struct {
    const char* arguments;
    const char* findings;
} kTreatments[] = {
    {"-c:v libx264 -crf 40 -preset veryfast", ""},
    {"-c:v mpeg2video -b:v 2M", ""},
    {"-c:v dvvideo -pix_fmt yuv420p", ""},
    {"-c:v ffv1 -pix_fmt yuv422p10le -vf scale=180:144", "geometry.size: 180x144"},
    {"-c:v libx264 -crf 18 -preset ultrafast -vf scale=1440:1152", "geometry.size: 1440x1152"},
    {"-c:v libx264 -crf 23 -preset ultrafast -vf hflip", "geometry.mirror: left and right are exchanged"},
    {"-c:v ffv1 -vf vflip", "geometry.mirror: top and bottom are exchanged"},
    {"-c:v ffv1 -vf hflip,vflip", "geometry.rotate: 180 degrees clockwise"},
    {"-c:v ffv1 -vf transpose=1", "geometry.rotate: 90 degrees clockwise"},
    {"-c:v libx264 -crf 23 -preset ultrafast -vf crop=704:560:8:10",
     "geometry.crop: 8 pixels at the left, 10 at the top, 8 at the right, 6 at the bottom"},
    {"-c:v libx264 -crf 30 -preset ultrafast -vf pad=1280:720:280:72",
     "geometry.pad: 280 pixels at the left, 72 at the top, 280 at the right, 72 at the bottom"},
    {"-c:v ffv1 -vf crop=712:570:0:0,pad=720:576:8:6", "geometry.shift: 8 pixels at the left, 6 at the top"},
    {"-c:v ffv1 -vf transpose=2,pad=1000:1000:20:30",
     "geometry.rotate: 270 degrees clockwise; geometry.pad: 20 pixels at the left, 30 at the top, 404 "
     "at the right, 250 at the bottom"},
};

TEST(NumberReader, ReadsAndPlacesNumbersThatCodecsAndFiltersWentOver) {
    const TestFolder folder;
    const std::string raw = folder / "raw", file = folder / "video.nut";
    {
        const std::unique_ptr<FILE, int (*)(FILE*)> out(std::fopen(raw.c_str(), "wb"), std::fclose);
        for (const std::int32_t number : kNumbers)
            ASSERT_EQ(std::fwrite(FrameOf(number).data(), kSize.width * 4, kSize.height, out.get()),
                      kSize.height);
    }
    for (const auto& row : kTreatments) {
        OutputOf(
            fmt::format("ffmpeg -v error -y -f rawvideo -pix_fmt bgra -s 720x576 -r 25 -i '{}' {} '{}' 2>&1",
                        raw, row.arguments, file));
        const auto video = OpenVideo(file);
        ClipFormat clip;
        clip.size = kSize;
        VideoFacts facts = video->Facts();
        facts.aspect.reset();
        NumberReader reader(kSize);
        PlacementFinder finder(clip, facts);
        VideoPicture picture;
        for (const std::int32_t number : kNumbers) {
            ASSERT_TRUE(video->Next(picture)) << row.arguments;
            const NumberReading reading = reader.Read(picture);
            EXPECT_EQ(reading.whole.number, number) << row.arguments;
            finder.Add(FindActive(picture), reading.place);
        }
        std::string findings;
        for (const Finding& finding : finder.Findings())
            findings += fmt::format("{}{}: {}", findings.empty() ? "" : "; ", finding.kind, finding.found);
        EXPECT_EQ(findings, row.findings) << row.arguments;
    }
}

TEST(NumberReader, TellsFieldsOfTwoFramesFromABlendOfThem) {
    const std::vector<std::uint32_t> a = FrameOf(417), b = FrameOf(418);
    std::vector<std::uint32_t> woven = a;
    LumaPicture blended(a);
    const LumaPicture other(b);
    for (std::size_t i = 0; i < woven.size(); ++i) {
        if (i / kSize.width % 2 == 1) woven[i] = b[i];
        blended.samples[i] = static_cast<std::uint8_t>((blended.samples[i] * 2 + other.samples[i] + 1) / 3);
    }
    NumberReader reader(kSize);
    const NumberReading fields = reader.Read(LumaPicture(woven).View());
    EXPECT_EQ(fields.field[0].number, 417);
    EXPECT_EQ(fields.field[1].number, 418);
    std::vector<std::uint32_t> flipped;
    for (std::size_t row = kSize.height; row-- > 0;)
        flipped.insert(flipped.end(), woven.begin() + std::ptrdiff_t(row * kSize.width),
                       woven.begin() + std::ptrdiff_t((row + 1) * kSize.width));
    const NumberReading turned = NumberReader(kSize).Read(LumaPicture(flipped).View());
    EXPECT_EQ(turned.field[0].number, 418);
    EXPECT_EQ(turned.field[1].number, 417);
    EXPECT_FALSE(fields.whole.number || fields.whole.blended);

    const NumberReading blend = reader.Read(blended.View());
    EXPECT_FALSE(blend.whole.number || blend.field[0].number);
    EXPECT_TRUE(blend.whole.blended && blend.whole.partsKnown);
    EXPECT_EQ(blend.whole.parts, (std::array<std::int64_t, 2>{417, 418}));
}

TEST(NumberReader, FieldsThatCantBeReadShowWhatTheWholePictureDoes) {
    using Number = std::optional<std::int64_t>;
    const Number none;
    // What can be read of all rows, of the even and of the odd ones, and what the two fields show by that.
    const std::array<Number, 5> kRows[] = {
        {7, 7, 8, 7, 8},       {7, none, none, 7, 7},    {7, none, 7, 7, 7},
        {8, none, 7, none, 7}, {none, 7, none, 7, none}, {none, 7, 8, 7, 8},
    };
    for (const auto& [whole, even, odd, first, second] : kRows) {
        NumberReading numbers;
        numbers.whole.number = whole;
        numbers.field[0].number = even;
        numbers.field[1].number = odd;
        FrameReading reading;
        NoteNumbers(numbers, reading);
        EXPECT_EQ(reading.frame, (std::array<std::optional<double>, 2>{first, second}));
    }
}

TEST(NumberReader, MakesNothingUp) {
    // Parts of numbers, and what is no number.
    LumaPicture cut(FrameOf(1234));
    cut.samples.erase(cut.samples.begin(), cut.samples.begin() + 89); // up to the 2
    cut.samples.resize(std::size_t{kSize.width} * kSize.height);
    LumaPicture covered(FrameOf(1234)), noise(FrameOf(1234)), small(FrameOf(0));
    std::uint32_t seed = 1;
    for (std::size_t i = 0; i < covered.samples.size(); ++i) {
        seed = seed * 1664525 + 1013904223;
        noise.samples[i] = static_cast<std::uint8_t>(seed >> 24);
        const std::size_t x = i % kSize.width, y = i / kSize.width;
        if (x > 140 && x < 200 && y > 50 && y < 80) covered.samples[i] = 230;
        small.samples[i] = static_cast<std::uint8_t>(i / 4096 % 2 * 200);
    }
    for (const LumaPicture* picture : {&cut, &covered, &noise, &small}) {
        const NumberReading reading = NumberReader(kSize).Read(picture->View());
        EXPECT_FALSE(reading.whole.number || reading.field[0].number || reading.field[1].number);
    }
}

} // namespace
