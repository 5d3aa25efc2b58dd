// From a clip to files, read back by independent programs (ffprobe, ffmpeg). Faults sought: field order,
// aspect, rate, range or color description lost on the way to stream or container, colors off, frames
// missing, temporary files left.
#include "Export/Export.h"

#include <cmath>
#include <map>
#include <memory>
#include <set>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestClips.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

namespace fs = std::filesystem;
using corvane::ExportOptions;
using corvane::testing::MakeClip;
using corvane::testing::OutputOf;
using corvane::testing::Probe;
using corvane::testing::Settings;
using corvane::testing::TestFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

const std::atomic<bool> kNoCancel{false};

corvane::ExportReport Export(const Settings& settings, const fs::path& out, const std::string& codec = "") {
    const ExportOptions options{.output = out, .format = {}, .codec = codec, .frames = {}};
    return corvane::ExportClip(*MakeClip(settings), options, {}, kNoCancel);
}

/// The color `c` (R, G, B) as limited-range Y'CbCr, by the published matrices.
std::array<double, 3> Published(const std::string& matrix, const double (&c)[3]) {
    const double red = matrix == "bt709" ? 0.2126 : 0.299, blue = matrix == "bt709" ? 0.0722 : 0.114;
    const double luma = red * c[0] + (1 - red - blue) * c[1] + blue * c[2];
    return {16 + 219 * luma, 128 + 224 * (c[2] - luma) / (2 * (1 - blue)),
            128 + 224 * (c[0] - luma) / (2 * (1 - red))};
}

/// Compares a row of each field, below the frame's number, as it was decoded: without a scaler.
void ExpectColors(const fs::path& file, const Settings& settings, const std::string& matrix,
                  const std::string& name) {
    const std::string planes =
        OutputOf(fmt::format("ffmpeg -v error -i '{}' -frames:v 1 -f rawvideo -", file.string()));
    const std::size_t luma = std::size_t{settings.width} * settings.height;
    const bool words = planes.size() == 4 * luma; // 4:2:2 of 10 bits
    ASSERT_TRUE(words || planes.size() == luma * 3 / 2) << name << ": " << planes.size() << " bytes";
    const auto at = [&](std::size_t sample) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(planes[i]); };
        return words ? (byte(2 * sample) + byte(2 * sample + 1) * 256) / 4.0 : byte(sample);
    };
    const double upper[3] = {0.95, 0.1, 0.3}, lower[3] = {0.05, 0.8, 0.55};
    const std::size_t columns = settings.width / 2, chroma = words ? luma / 2 : luma / 4;
    for (const std::size_t row : {settings.height - 40, settings.height - 39}) {
        const auto expected = Published(matrix, row % 2 == 0 || settings.fieldType == 0 ? upper : lower);
        // The chroma rows of 4:2:0 belong to the fields in turn.
        const std::size_t chromaRow = words ? row : settings.fieldType == 0 ? row / 2 : row / 4 * 2 + row % 2;
        EXPECT_NEAR(at(row * settings.width + 100), expected[0], 1) << name << " row " << row;
        EXPECT_NEAR(at(luma + chromaRow * columns + 50), expected[1], 1) << name << " row " << row;
        EXPECT_NEAR(at(luma + chroma + chromaRow * columns + 50), expected[2], 1) << name << " row " << row;
    }
}

struct Kind {
    const char* name;
    const char* codec;
};

/// Exports a clip with this field order, rate and shape, and compares what the readers say.
void ExpectRoundTrip(const Kind& kind, int fieldType, std::int64_t ticksPerFrame, const std::string& rate,
                     bool square) {
    // What readers call these field orders: H.264's parser, and the containers.
    const std::set<std::string> orders[] = {{"progressive"}, {"tt", "tb"}, {"bb", "bt"}};
    const std::string matrix = square ? "bt709" : "bt470bg";
    const std::string name =
        fmt::format("{} {} fields {} rate {} {}", kind.name, kind.codec, fieldType, rate, matrix);
    TestFolder folder;
    Settings settings;
    settings.fieldType = fieldType;
    settings.ticksPerFrame = ticksPerFrame;
    if (square)
        settings.parNumerator = settings.parDenominator = 1, settings.width = 1280, settings.height = 720;
    Export(settings, folder / kind.name, kind.codec);
    EXPECT_THAT(folder.Names(), ElementsAre(kind.name));
    auto found =
        Probe(folder / kind.name,
              "frame=interlaced_frame,top_field_first:stream=field_order,sample_aspect_ratio,r_frame_rate,"
              "avg_frame_rate,color_range,color_space,color_primaries,color_transfer,nb_read_frames");
    EXPECT_EQ(found["interlaced_frame"], fieldType == 0 ? "0" : "1") << name;
    EXPECT_EQ(found["top_field_first"], fieldType == 1 ? "1" : "0") << name;
    EXPECT_THAT(orders[fieldType], testing::Contains(found["field_order"])) << name;
    EXPECT_EQ(found["sample_aspect_ratio"], square ? "1:1" : "40:33") << name;
    EXPECT_EQ(found["r_frame_rate"], rate) << name;
    EXPECT_EQ(found["avg_frame_rate"], rate) << name;
    // QuickTime's color atom has no range; without one Y'CbCr is limited.
    EXPECT_EQ(found["color_range"], std::string_view(kind.codec) == "v210" ? "unknown" : "tv") << name;
    EXPECT_EQ(found["color_space"], matrix) << name;
    EXPECT_EQ(found["color_primaries"], matrix) << name;
    EXPECT_EQ(found["color_transfer"], square ? "bt709" : "smpte170m") << name;
    EXPECT_EQ(found["nb_read_frames"], "5") << name;
    ExpectColors(folder / kind.name, settings, matrix, name);
}

TEST(Export, StreamAndContainerTellWhatTheClipIs) {
    const std::pair<std::int64_t, const char*> rates[] = {
        {10160640000, "25/1"}, {8475667200, "30000/1001"}, {20321280000, "25/2"}};
    for (const int fieldType : {0, 1, 2})
        for (const auto& [ticks, rate] : rates)
            for (const bool square : {true, false})
                ExpectRoundTrip({"a.mp4", ""}, fieldType, ticks, rate, square);
    const Kind kinds[] = {{"a.mkv", ""}, {"a.mov", ""}, {"a.mov", "prores"}, {"a.mov", "v210"}};
    int row = 0;
    for (const Kind& kind : kinds)
        for (const int fieldType : {0, 1, 2}) {
            const auto& [ticks, rate] = rates[row % 3];
            ExpectRoundTrip(kind, fieldType, ticks, rate, row / 2 % 2 == 0);
            ++row;
        }
}

TEST(Export, Y4mHasTheColorsOfTheClip) {
    TestFolder folder;
    for (const int fieldType : {0, 1, 2}) {
        Export({.fieldType = fieldType}, folder / "a.y4m");
        ExpectColors(folder / "a.y4m", {.fieldType = fieldType}, "bt470bg", "y4m");
    }
}

TEST(Export, LosslessTargetsKeepEveryByte) {
    TestFolder folder;
    for (const std::uint32_t format : {CvPixelFormat_BGRA_4444_8u, CvPixelFormat_XRGB_4444_8u}) {
        const Settings settings{.pixelFormat = format, .width = 94, .height = 66};
        Export(settings, folder / "a.mkv", "ffv1");
        Export(settings, folder / "a.raw");
        Export(settings, folder / "%02d.png");
        const std::string raw = corvane::testing::ReadFile(folder / "a.raw");
        const std::string read = "ffmpeg -v error -i '{}' -pix_fmt bgra -f rawvideo -";
        EXPECT_TRUE(OutputOf(fmt::format(fmt::runtime(read), (folder / "a.mkv").string())) == raw);
        EXPECT_TRUE(OutputOf(fmt::format(fmt::runtime(read), (folder / "%02d.png").string())) == raw);
    }
}

TEST(Export, FramesChosenAndSinglePictures) {
    TestFolder folder;
    const auto clip = MakeClip({});
    ExportOptions options;
    options.output = folder / "one.png";
    EXPECT_EQ(corvane::ExportClip(*clip, options, {}, kNoCancel).frames, 1);
    options.frames = {3, 4};
    EXPECT_THROW(corvane::ExportClip(*clip, options, {}, kNoCancel), corvane::UsageFailure);
    options.output = folder / "n%d.png";
    EXPECT_EQ(corvane::ExportClip(*clip, options, {}, kNoCancel).frames, 2);
    EXPECT_THAT(folder.Names(), ElementsAre("n3.png", "n4.png", "one.png"));
}

TEST(Export, WrongRequestsNameWhatWouldBeRight) {
    struct Row {
        const char *output, *codec;
        std::pair<std::int64_t, std::int64_t> frames;
        const char* expected;
        bool usage = true;
        std::uint32_t width = 720;
    };
    const Row rows[] = {{"a.png", "", {0, 5}, "0:4"},
                        {"a.raw", "", {-1, 2}, "0:4"},
                        {"a", "", {0, 1}, "--format"},
                        {"a.nothing", "", {0, 1}, "choose png, y4m"},
                        {"a.png", "h264", {0, 0}, "no codecs"},
                        {"a.y4m", "411", {0, 1}, "420"},
                        {"a.y4m", "420p9", {0, 1}, "420"},
                        {"a.mp4", "nothing", {0, 1}, "h264, ffv1"},
                        {"a.mp4", "v210", {0, 1}, "can't carry v210"},
                        {"a.mp4", "h264:nothing=1", {0, 1}, "no option nothing"},
                        {"a.mp4", "h264:preset", {0, 1}, "NAME:option=value"},
                        {"a.mkv", "ffv1:pix_fmt=gray", {0, 1}, "pix_fmt"},
                        {"a.mp4", "", {0, 1}, "multiple of 2", false, 47},
                        {"no/a.mp4", "", {0, 1}, "make it first", false}};
    for (const Row& row : rows) {
        TestFolder folder;
        const ExportOptions options{
            .output = folder / row.output, .format = {}, .codec = row.codec, .frames = row.frames};
        try {
            corvane::ExportClip(*MakeClip({.width = row.width}), options, {}, kNoCancel);
            ADD_FAILURE() << row.output << " " << row.codec;
        } catch (const corvane::Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(row.expected));
            EXPECT_EQ(dynamic_cast<const corvane::UsageFailure*>(&failure) != nullptr, row.usage)
                << failure.what();
        }
        EXPECT_TRUE(folder.Names().empty()) << row.output << " " << row.codec;
    }
}

} // namespace
