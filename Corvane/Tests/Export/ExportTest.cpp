// From a clip to files, read back by independent programs (ffprobe, ffmpeg). Faults sought: field order,
// aspect, rate, range or color description lost on the way to stream or container, colors off, frames
// missing, temporary files left; a choice that is offered and then fails, or refused although it works, a
// reason that is not the true one, alpha lost without a word.
#include <cmath>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Export/ExportChoices.h"
#include "TestClips.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

namespace fs = std::filesystem;
using namespace corvane;
using namespace corvane::testing;
using ::testing::ElementsAre;

ExportReport Export(const Settings& settings, const fs::path& out, const std::string& codec = "",
                    std::optional<std::pair<std::int64_t, std::int64_t>> frames = {}) {
    return ExportClip(*MakeClip(settings),
                      {.output = out, .format = {}, .codec = codec, .frames = frames, .jobs = 4}, {},
                      std::atomic<bool>{false});
}

/// The color `c` (R, G, B) as limited-range Y'CbCr, by the published matrices.
std::array<double, 3> Published(const std::string& matrix, const double (&c)[3]) {
    const double red = matrix == "bt709" ? 0.2126 : 0.299, blue = matrix == "bt709" ? 0.0722 : 0.114;
    const double luma = red * c[0] + (1 - red - blue) * c[1] + blue * c[2];
    return {16 + 219 * luma, 128 + 224 * (c[2] - luma) / (2 * (1 - blue)),
            128 + 224 * (c[0] - luma) / (2 * (1 - red))};
}

/// Compares a row of each field, below the frame's number, as it was decoded: without a scaler.
void ExpectColors(const fs::path& file, const Settings& settings, const std::string& matrix) {
    const std::string planes =
        OutputOf(fmt::format("ffmpeg -v error -i '{}' -frames:v 1 -f rawvideo -", file.string()));
    const std::size_t luma = std::size_t{settings.width} * settings.height;
    const bool words = planes.size() == 4 * luma; // 4:2:2 of 10 bits
    ASSERT_TRUE(words || planes.size() == luma * 3 / 2) << planes.size() << " bytes";
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
        EXPECT_NEAR(at(row * settings.width + 100), expected[0], 1) << "row " << row;
        EXPECT_NEAR(at(luma + chromaRow * columns + 50), expected[1], 1) << "row " << row;
        EXPECT_NEAR(at(luma + chroma + chromaRow * columns + 50), expected[2], 1) << "row " << row;
    }
}

/// Exports a clip with this field order, rate and shape, and compares what the readers say.
void ExpectRoundTrip(const char* name, const std::string& codec, int fieldType, std::int64_t ticksPerFrame,
                     const std::string& rate, bool square) {
    const std::string matrix = square ? "bt709" : "bt470bg";
    SCOPED_TRACE(fmt::format("{} {} fields {} rate {} {}", name, codec, fieldType, rate, matrix));
    const TestFolder folder;
    Settings settings{.fieldType = fieldType, .ticksPerFrame = ticksPerFrame};
    if (square)
        settings.parNumerator = settings.parDenominator = 1, settings.width = 1280, settings.height = 720;
    Export(settings, folder / name, codec);
    EXPECT_THAT(folder.Names(), ElementsAre(name));
    auto found =
        Probe(folder / name, "frame=interlaced_frame,top_field_first:stream=field_order,sample_aspect_ratio,"
                             "r_frame_rate,avg_frame_rate,color_range,color_space,color_primaries,"
                             "color_transfer,nb_read_frames");
    // "tt" or "tb", "bb" or "bt": H.264's parser and the containers tell field orders in different words.
    if (std::string& order = found["field_order"]; order.size() == 2) order.resize(1);
    const std::map<std::string, std::string> expected = {
        {"interlaced_frame", fieldType == 0 ? "0" : "1"},
        {"top_field_first", fieldType == 1 ? "1" : "0"},
        {"field_order", std::array{"progressive", "t", "b"}.at(static_cast<std::size_t>(fieldType))},
        {"sample_aspect_ratio", square ? "1:1" : "40:33"},
        {"r_frame_rate", rate},
        {"avg_frame_rate", rate},
        // QuickTime's color atom has no range; without one Y'CbCr is limited.
        {"color_range", codec == "v210" ? "unknown" : "tv"},
        {"color_space", matrix},
        {"color_primaries", matrix},
        {"color_transfer", square ? "bt709" : "smpte170m"},
        {"nb_read_frames", "5"}};
    EXPECT_EQ(found, expected);
    const std::string file = ReadFile(folder / name);
    EXPECT_EQ(file.find("moov") < file.find("mdat"), std::string_view(name) == "a.mp4")
        << "its index comes first";
    ExpectColors(folder / name, settings, matrix);
}

TEST(Export, StreamAndContainerTellWhatTheClipIs) {
    const std::pair<std::int64_t, const char*> rates[] = {
        {10160640000, "25/1"}, {8475667200, "30000/1001"}, {20321280000, "25/2"}};
    for (const int fieldType : {0, 1, 2})
        for (const auto& [ticks, rate] : rates)
            for (const bool square : {true, false})
                ExpectRoundTrip("a.mp4", "", fieldType, ticks, rate, square);
    int row = 0;
    for (const auto& [name, codec] :
         {std::pair("a.mkv", ""), {"a.mov", ""}, {"a.mov", "prores:profile=hq"}, {"a.mov", "v210"}})
        for (const int fieldType : {0, 1, 2}) {
            const auto& [ticks, rate] = rates[row % 3];
            ExpectRoundTrip(name, codec, fieldType, ticks, rate, row++ / 2 % 2 == 0);
        }
    // Their streams know no fields.
    for (const auto& [name, codec] : {std::pair("a.mp4", "hevc"), {"a.mkv", "av1"}})
        for (const bool square : {true, false})
            ExpectRoundTrip(name, codec, 0, rates[1].first, rates[1].second, square);
    const TestFolder folder;
    for (const int fieldType : {0, 1, 2}) {
        Export({.fieldType = fieldType}, folder / "a.y4m");
        ExpectColors(folder / "a.y4m", {.fieldType = fieldType}, "bt470bg");
    }
}

constexpr std::uint32_t kFloatX = CvPixelFormat_XRGB_4444_32f;

/// How many levels the samples of a gray picture have.
std::size_t CountLevels(const fs::path& file, std::size_t bytes) {
    const std::string samples = OutputOf(fmt::format("ffmpeg -v error -i '{}' -f rawvideo -", file.string()));
    std::set<std::string> levels;
    for (std::size_t i = 0; i < samples.size(); i += bytes) levels.insert(samples.substr(i, bytes));
    return levels.size();
}

TEST(Export, CodecsKeepTheDepthAndTheAlphaThatTheyCanAndEqualRunsHaveEqualBytes) {
    constexpr std::uint32_t kBytes = CvPixelFormat_BGRA_4444_8u, kFloats = CvPixelFormat_V210_422_10u_709;
    const struct {
        const char *name, *codec;
        std::uint32_t format;
        const char* pixels; // as they are decoded
        std::size_t levels; // of 1088 rows from black to white, at least
    } rows[] = {{"a.mov", "v210", kFloats, "yuv422p10le", 870},
                {"a.mov", "v210", kBytes, "yuv422p10le", 250},
                {"a.mov", "prores", kFloats, "yuva444p12le", 870},
                {"a.mov", "prores", kFloatX, "yuv422p10le", 870},
                {"a.mov", "prores:profile=hq", kBytes, "yuv422p10le", 250},
                {"a.mov", "prores:profile=4", kFloatX, "yuv444p12le", 870},
                {"a.mkv", "ffv1", kFloats, "yuva444p16le", 1000},
                {"a.mkv", "hevc", kFloats, "yuv420p10le", 700},
                {"a.mkv", "hevc", kBytes, "yuv420p", 200},
                {"a.mp4", "av1", kBytes, "yuv420p", 200},
                {"a.mxf", "", kBytes, "yuv422p", 200}, // MPEG-2 knows few aspects
                {"a.nut", "", kFloats, "yuva444p16le", 1000},
                {"a.exr", "", kFloats, "gbrapf32le", 1000},
                {"a.exr", "exr:format=half", kBytes, "gbrapf32le", 250},
                {"a.dpx", "", kFloats, "gbrp10le", 1000},
                {"a.tiff", "", kFloats, "rgba64le", 1000},
                {"a.mkv", "hevc:profile=main", kFloats, "yuv420p", 200},
                {"a.mp4", "av1", kFloats, "yuv420p10le", 700},
                {"a.mp4", "h264", kFloats, "yuv420p", 200},
                {"a.y4m", "444", kFloats, "yuv444p16le", 1000}};
    for (const auto& row : rows) {
        SCOPED_TRACE(fmt::format("{} {} of {:x}", row.name, row.codec, row.format));
        const TestFolder folder;
        const fs::path file = folder / row.name;
        Settings settings{.pixelFormat = row.format, .width = 64, .height = 1088, .fieldType = 0};
        settings.frames = settings.gradient = 1;
        Export(settings, file, row.codec);
        auto found = Probe(file, "stream=pix_fmt,sample_aspect_ratio");
        EXPECT_EQ(found["pix_fmt"], row.pixels);
        EXPECT_EQ(found["sample_aspect_ratio"], row.name == std::string_view("a.mxf") ? "1:1" : "40:33");
        const std::string& pixels = found["pix_fmt"];
        EXPECT_GE(CountLevels(file, pixels.ends_with("f32le") ? 4
                                    : pixels.ends_with('e')   ? 2
                                                              : 1),
                  row.levels);
        const std::string first = ReadFile(file);
        Export(settings, file, row.codec);
        EXPECT_TRUE(ReadFile(file) == first);
    }
}

TEST(Export, LosslessTargetsKeepEveryByte) {
    const TestFolder folder;
    for (const auto& [format, pixels] :
         {std::pair<std::uint32_t, const char*>(CvPixelFormat_BGRA_4444_8u, "bgra"),
          {CvPixelFormat_XRGB_4444_8u, "bgra"},
          {CvPixelFormat_XRGB_4444_32f, "rgba64le"}}) {
        const Settings settings{.pixelFormat = format, .width = 94, .height = 66};
        Export(settings, folder / "a.mkv", "ffv1");
        Export(settings, folder / "a.raw");
        Export(settings, folder / "%02d.png");
        Export(settings, folder / "%02d.tiff");
        for (const char* const name : {"a.mkv", "%02d.png", "%02d.tiff"})
            EXPECT_TRUE(OutputOf(fmt::format("ffmpeg -v error -i '{}' -pix_fmt {} -f rawvideo -",
                                             (folder / name).string(), pixels)) == ReadFile(folder / "a.raw"))
                << name << ' ' << pixels;
    }
}

// Catches gamma-coded numbers, straight alpha, and linear frames that went through a transfer and back.
TEST(Export, EXRIsLinearLightWithPremultipliedAlpha) {
    const double colors[] = {0.1, 0.3, 0.95}; // G, B, R: the order of libav's planes
    const auto linear = [](double coded) { return std::pow((coded + 0.099) / 1.099, 1 / 0.45); };
    for (const auto& [format, tolerance] :
         {std::pair<std::uint32_t, double>(CvPixelFormat_BGRA_4444_8u, 0.005),
          {CvPixelFormat_BGRA_4444_32f, 1e-6},
          {CvPixelFormat_BGRA_4444_32f_Linear, 1e-6},
          {CvPixelFormat_PRGB_4444_32f_Linear, 1e-6}}) {
        const TestFolder folder;
        Export({.pixelFormat = format, .fieldType = 0, .frames = 1, .alpha = 0.5}, folder / "a.exr");
        const std::string bytes =
            OutputOf(fmt::format("ffmpeg -v error -i '{}' -f rawvideo -", (folder / "a.exr").string()));
        for (std::size_t plane = 0; plane < 3; ++plane) {
            float found;
            std::memcpy(&found, bytes.data() + bytes.size() / 4 * plane, sizeof found);
            EXPECT_NEAR(found, linear(colors[plane]) / 2, tolerance) << std::hex << format << ' ' << plane;
        }
    }
}

TEST(Export, AnEncoderThatHoldsPicturesGetsThemUnchanged) {
    const TestFolder folder;
    const Settings settings{.frames = 24};
    const auto packets = [](const fs::path& file) {
        return OutputOf(fmt::format(
            "ffmpeg -v error -i '{}' -c copy -f framemd5 - | grep -v '#' | cut -d, -f6", file.string()));
    };
    Export(settings, folder / "all.mov", "prores");
    const std::string all = packets(folder / "all.mov");
    for (const std::int64_t frame : {4, 9, 16, 17}) {
        Export(settings, folder / "one.mov", "prores", std::pair(frame, frame));
        const std::string one = packets(folder / "one.mov");
        EXPECT_THAT(all, ::testing::HasSubstr(one)) << frame;
        EXPECT_GT(one.size(), 30u);
    }
}

TEST(Export, FramesChosenAndSinglePictures) {
    const TestFolder folder;
    EXPECT_EQ(Export({}, folder / "one.PNG").frames, 1);
    EXPECT_EQ(Export({}, folder / "n%d.png", "", std::pair(3, 4)).frames, 2);
    EXPECT_THAT(folder.Names(), ElementsAre("n3.png", "n4.png", "one.PNG"));
    const auto replaced = [&](std::int64_t first, std::int64_t last) {
        return FindReplaced(folder / "n%d.png", *FindExportChoice("png-pictures"), {first, last});
    };
    EXPECT_EQ(replaced(0, 3), folder / "n3.png");
    EXPECT_EQ(replaced(5, 9), std::nullopt);
}

TEST(Export, WrongRequestsNameWhatWouldBeRight) {
    struct Row {
        const char *output, *codec;
        std::pair<std::int64_t, std::int64_t> frames;
        const char* expected;
        bool usage = true;
        std::uint32_t width = 720;
    };
    const Row rows[] = {
        {"a.raw", "", {0, 5}, "0:4"},
        {"a.raw", "", {-1, 2}, "0:4"},
        {"a.png", "", {3, 4}, "a%05d.png"},
        {"a", "", {0, 1}, "--format: png, y4m, raw, exr, dpx, tiff, mp4, mov, mkv, mxf, nut or framemd5"},
        {"a.nothing", "", {0, 1}, "choose png, y4m"},
        {"a.png", "h264", {0, 0}, "no codecs"},
        {"a.exr", "h264", {0, 0}, "exr:option=value"},
        {"a.tif", "", {0, 1}, "a%05d.tiff"},
        {"a.y4m", "411", {0, 1}, "420"},
        {"a.y4m", "420p9", {0, 1}, "420"},
        {"a.mp4", "nothing", {0, 1}, "h264, prores"},
        {"a.mp4", "v210", {0, 1}, "can't carry v210"},
        {"a.mov", "libsvtav1", {0, 1}, "can't carry libsvtav1"},
        {"a.mp4", "h264:nothing=1", {0, 1}, "no option nothing"},
        {"a.mp4", "h264:preset", {0, 1}, "NAME:option=value"},
        {"a.mkv", "ffv1:pix_fmt=gray", {0, 1}, "pix_fmt"},
        {"a.mp4", "", {0, 1}, "multiple of 2", false, 47},
        {"no/a.mp4", "", {0, 1}, "make it first", false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(fmt::format("{} {}", row.output, row.codec));
        const TestFolder folder;
        try {
            Export({.width = row.width}, folder / row.output, row.codec, row.frames);
            ADD_FAILURE();
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), ::testing::HasSubstr(row.expected));
            EXPECT_EQ(dynamic_cast<const UsageFailure*>(&failure) != nullptr, row.usage) << failure.what();
        }
        EXPECT_TRUE(folder.Names().empty());
    }
}

constexpr int kFrames = 3;

/// Reads an export again with an independent program, if there is one for the kind.
void ExpectReadsAgain(const TestFolder& folder, const ExportChoice& choice, bool alpha) {
    EXPECT_EQ(folder.Names().size(), choice.naming == ExportNaming::kPictures ? kFrames : 1);
    const fs::path file = folder / folder.Names().at(0);
    EXPECT_GT(fs::file_size(file), 0u);
    if (choice.kind == std::string("framemd5") || choice.kind == std::string("raw")) return;
    auto found = Probe(file, "stream=nb_read_frames,pix_fmt");
    EXPECT_EQ(found["nb_read_frames"], std::to_string(choice.naming == ExportNaming::kOneFile ? kFrames : 1));
    EXPECT_EQ(found["pix_fmt"].find('a') == 3, alpha) << found["pix_fmt"]; // as in bgra, yuva444p, gbrap
}

TEST(ExportChoices, WhatTheySayOfAClipIsTrue) {
    const std::pair<Settings, int> rows[] = {
        {{.width = 64, .height = 48}, 0},
        // H.264 of interlaced 4:2:0 needs multiples of 4.
        {{.pixelFormat = CvPixelFormat_VUYA_4444_32f_709, .width = 64, .height = 46}, 3},
        {{.pixelFormat = kFloatX, .width = 47, .height = 33, .fieldType = 0}, 5},
        {{.width = 2, .height = 16388, .fieldType = 0}, 4}};
    for (auto [settings, unfit] : rows) {
        settings.frames = kFrames;
        settings.alpha = 0.5;
        const auto clip = MakeClip(settings);
        for (const ExportChoice& choice : ExportChoices()) {
            SCOPED_TRACE(fmt::format("{} of {}x{}", choice.id, settings.width, settings.height));
            EXPECT_EQ(FindExportChoice(choice.id), &choice) << "two with one id";
            const TestFolder folder;
            ExportOptions options = OptionsFor(choice);
            options.output = CompletedPath(folder / "out", choice);
            const ExportPreview preview = PreviewExport(*clip, options);
            try {
                const ExportReport report = ExportClip(*clip, options, {}, std::atomic<bool>{false});
                EXPECT_EQ(std::pair(preview.whyNot, preview.losesAlpha),
                          std::pair(std::string(), report.losesAlpha));
                ExpectReadsAgain(folder, choice, settings.pixelFormat != kFloatX && !preview.losesAlpha);
            } catch (const Failure& failure) {
                EXPECT_THAT(failure.what(), ::testing::EndsWith(preview.whyNot));
                EXPECT_NE(preview.whyNot, "");
                EXPECT_TRUE(folder.Names().empty());
                --unfit;
            }
        }
        EXPECT_EQ(unfit, 0);
    }
}

TEST(ExportChoices, NamesAreCompletedAsTheChoiceNeedsThem) {
    const ExportChoice& movie = *FindExportChoice("mp4-h264");
    const ExportChoice& pictures = *FindExportChoice("png-pictures");
    EXPECT_EQ(FindExportChoice("nothing"), nullptr);
    EXPECT_EQ(CompletedPath("/a.b/clip.MP4", movie), "/a.b/clip.MP4");
    EXPECT_EQ(CompletedPath("/a.b/clip.png", movie), "/a.b/clip.png.mp4");
    EXPECT_EQ(CompletedPath("/a.b/clip", pictures), "/a.b/clip.%05d.png");
    EXPECT_EQ(CompletedPath("/a.b/%d clip.png", pictures), "/a.b/%d clip.png");
    EXPECT_THROW(CompletedPath("50%.png", pictures), UsageFailure);
    EXPECT_EQ(ProposedFileName("a/b 50%\n", pictures), "a_b 50__.%05d.png");
    EXPECT_EQ(ProposedFileName("", movie), "clip.mp4");
    // 2 bytes a letter, one of which stands across the end of the room.
    std::string letters = "x";
    for (int i = 0; i < 150; ++i) letters += "\xC3\xA4";
    EXPECT_EQ(ProposedFileName(letters, movie), letters.substr(0, 199) + ".mp4");
}

} // namespace
