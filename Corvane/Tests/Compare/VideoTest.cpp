// Faults sought: samples taken from the wrong place, depth or byte order, gaps of a sequence closed in
// silence.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Compare/Video.h"
#include "Tests/Export/TestClips.h"
#include "Tests/TestFolder.h"

namespace {

using namespace corvane;
using corvane::testing::OutputOf;
using corvane::testing::TestFolder;

// The samples of all planes, one row after the other, in libav's order of planes.
std::string SamplesOf(const VideoPicture& picture) {
    constexpr int kYCbCr[] = {0, 1, 2, 3};
    constexpr int kGBR[] = {1, 2, 0, 3};
    std::string samples;
    for (int i = 0; i < picture.format.Planes(); ++i) {
        const int plane = (picture.format.yCbCr ? kYCbCr : kGBR)[i];
        for (std::uint32_t y = 0; y < picture.format.PlaneHeight(plane, picture.size.height); ++y)
            samples.append(reinterpret_cast<const char*>(picture.Row(plane, y)),
                           picture.format.PlaneWidth(plane, picture.size.width) *
                               picture.format.SampleBytes());
    }
    return samples;
}

TEST(Video, PlanesAreThoseThatAnIndependentToolMakes) {
    // How the file is made, and the planar samples that are the same.
    const std::pair<const char*, const char*> kRows[] = {
        {"yuv411p", "yuv411p"},
        {"yuva444p10le", "yuva444p10le"},
        {"gbrap12le", "gbrap12le"},
        {"rgb24", "gbrp"},
        {"abgr", "gbrap"},
        {"rgb48be", "gbrp16le"},
        {"rgba64le", "gbrap16le"},
        {"nv12", "yuv420p"},
        {"uyvy422", "yuv422p"},
        {"yuv420p10be", "yuv420p10le"},
        {"pal8 -vf 'split[a][b];[a]palettegen[p];[b][p]paletteuse' -c:v png", "gbrap -vf format=bgra"},
        {"ya8 -c:v png", "yuva420p -vf scale=out_range=full"},
    };
    const TestFolder folder;
    const std::string file = folder / "file", planes = folder / "planes";
    for (const auto& [format, planar] : kRows) {
        OutputOf(fmt::format(
            "ffmpeg -v error -y -f lavfi -i testsrc2=s=38x22:d=0.04:alpha=70 -frames:v 1 -c:v rawvideo "
            "-pix_fmt {} -f nut '{}' 2>&1",
            format, file));
        OutputOf(fmt::format("ffmpeg -v error -y -i '{}' -pix_fmt {} -f rawvideo '{}' 2>&1", file, planar,
                             planes));
        VideoPicture picture;
        ASSERT_TRUE(OpenVideo(file)->Next(picture)) << format;
        EXPECT_TRUE(SamplesOf(picture) == corvane::testing::ReadFile(planes)) << format;
    }
}

TEST(Video, APictureTellsItsRangeWhateverTheFirstOneSaid) {
    const TestFolder folder;
    const std::string file = folder / "joined.h264";
    for (const char* const range : {"tv", "pc"})
        OutputOf(fmt::format(
            "ffmpeg -v error -f lavfi -i testsrc2=s=64x48 -frames:v 1 -c:v libx264 -color_range {} "
            "-f h264 - 2>&1 >>'{}'",
            range, file));
    const auto video = OpenVideo(file);
    std::vector<bool> full;
    for (VideoPicture picture; video->Next(picture);) full.push_back(picture.tags.fullRange.value_or(false));
    EXPECT_THAT(full, ::testing::ElementsAre(false, true));
}

TEST(Video, NumbersOfASequenceAreItsTimes) {
    const TestFolder folder;
    // Names of another form are not of the sequence.
    for (const char* const name :
         {"a.010.png", "a.008.png", "a.009.png", "a.12.png", "a.013x.png", "b.011.png"})
        OutputOf(fmt::format("ffmpeg -v error -f lavfi -i testsrc2=s=38x22 -frames:v 1 -update 1 '{}' 2>&1",
                             (folder / name).string()));
    std::filesystem::rename(folder / "a.010.png", folder / "a.1000.png");
    const auto video = OpenVideo(folder / "a.%03d.png");
    std::vector<std::int64_t> times;
    for (VideoPicture picture; video->Next(picture);) times.push_back(picture.time.value_or(-1));
    EXPECT_THAT(times, ::testing::ElementsAre(8, 9, 1000));
}

} // namespace
