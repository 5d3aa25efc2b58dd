// Faults sought: facts that differ from the file's, JSON that a reader can't take, bad files that hang,
// crash, eat memory, pass for good ones or are refused without a name and a reason.
#include <algorithm>
#include <functional>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Process.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using testing::AllOf;
using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::int64_t kFlatMiB = 40;

TEST(Info, SaysWhatTheSamplesAre) {
    // Typed from the table in Samples/README.md, not from the files.
    struct Row {
        const char* name;
        unsigned width, height, parNumerator, parDenominator, fieldType, scale, sampleSize, frames;
        const char* pixelFormat;
        const char* deliveredFormat;
    };
    constexpr Row kRows[] = {
        {"defaults", 720, 480, 40, 33, 2, 30, 1, 1800, "BGRA_4444_8u", "BGRA_4444_8u"},
        {"pal-upper-first", 720, 576, 12, 11, 1, 25, 1, 250, "BGRA_4444_8u", "BGRA_4444_8u"},
        {"wrapped-document", 720, 480, 10, 11, 2, 30000, 1001, 300, "BGRA_4444_8u", "BGRA_4444_8u"},
        {"ten-bit-1080i", 1920, 1080, 1, 1, 1, 30000, 1001, 150, "V210_422_10u_709", "VUYA_4444_32f_709"},
        {"solid-1080p25", 1920, 1080, 1, 1, 0, 25, 1, 50, "BGRA_4444_8u", "BGRA_4444_8u"},
        {"gradient-23976", 1920, 1080, 1, 1, 0, 24000, 1001, 240, "BGRA_4444_8u", "BGRA_4444_8u"},
        {"uhd-5994", 3840, 2160, 1, 1, 0, 60000, 1001, 300, "VUYA_4444_8u_709", "VUYA_4444_8u_709"},
        {"float-linear", 1280, 720, 1, 1, 0, 50, 1, 100, "BGRA_4444_32f_Linear", "BGRA_4444_32f_Linear"},
        {"alpha-gradient", 640, 360, 1, 1, 0, 25, 1, 100, "BGRA_4444_8u", "BGRA_4444_8u"},
        {"premultiplied-12.5fps", 352, 288, 128, 117, 1, 25, 2, 50, "BGRP_4444_8u", "BGRP_4444_8u"},
    };
    std::vector<std::string> arguments = {"info", "--json"};
    for (const Row& row : kRows) arguments.push_back(Sample(row.name));
    const auto samples =
        std::ranges::count_if(fs::directory_iterator(SYNTHEX_SOURCE_DIR "/Samples"),
                              [](const auto& entry) { return entry.path().extension() == ".synthex"; });
    EXPECT_EQ(static_cast<std::size_t>(samples), std::size(kRows)) << "a sample is not tested";

    const ProcessResult result = RunSynthex(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    std::istringstream lines(result.out);
    std::string line;
    for (const Row& row : kRows) {
        ASSERT_TRUE(std::getline(lines, line)) << row.name;
        const std::string prefix = "CvPixelFormat_";
        const ordered_json wanted = {{"path", Sample(row.name)},
                                     {"width", row.width},
                                     {"height", row.height},
                                     {"parNumerator", row.parNumerator},
                                     {"parDenominator", row.parDenominator},
                                     {"fieldType", row.fieldType},
                                     {"depth", 32},
                                     {"scale", row.scale},
                                     {"sampleSize", row.sampleSize},
                                     {"duration", row.frames * row.sampleSize},
                                     {"frames", row.frames},
                                     {"pixelFormat", prefix + row.pixelFormat},
                                     {"deliveredFormat", prefix + row.deliveredFormat}};
        EXPECT_EQ(line, wanted.dump());
    }
    EXPECT_FALSE(std::getline(lines, line));
}

TEST(Info, TellsPeopleTheSame) {
    EXPECT_EQ(RunSynthex({"info", Sample("defaults"), Sample("ten-bit-1080i")}).out, Sample("defaults") + R"(
  Size           720 x 480 pixels
  Pixel aspect   40:33, shown at 873 x 480
  Field order    lower field first
  Rate           30/1 (30 frames a second)
  Duration       1800 frames, 00:01:00.000
  Pixel format   CvPixelFormat_BGRA_4444_8u (bgra, 0x61726762)
  Delivered as   CvPixelFormat_BGRA_4444_8u (bgra, 0x61726762)

)" + Sample("ten-bit-1080i") +
                                                                                         R"(
  Size           1920 x 1080 pixels
  Pixel aspect   1:1 (square)
  Field order    upper field first
  Rate           30000/1001 (29.97 frames a second)
  Duration       150 frames, 00:00:05.005
  Pixel format   CvPixelFormat_V210_422_10u_709 (v211, 0x31313276)
  Delivered as   CvPixelFormat_VUYA_4444_32f_709 (vUYa, 0x61595576)
)");
}

TEST(Info, JSONHoldsWhateverThePathHolds) {
    const TemporaryFolder folder;
    const fs::path odd = folder.Write("a \"quoted\" \\ name\n\x01 \xC3\xA9.synthex", Settings(""));
    const ProcessResult result = RunSynthex({"info", "--json", odd});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 1);
    EXPECT_EQ(ordered_json::parse(result.out).at("path"), odd.string());

    const ProcessResult refused = RunSynthex({"info", "--json", folder.Write("\xFF.synthex", Settings(""))});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("rename the file"));
}

TEST(Info, TriesAllClipsAndReturnsTheWorst) {
    const ProcessResult result =
        RunSynthex({"info", "--json", Sample("defaults"), "missing.synthex", Sample("uhd-5994")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 2);
    EXPECT_EQ(result.err, "synthex: missing.synthex: there is no such file.\n");
}

/// A file that can't be a clip, and what is to be said of it.
struct BadFile {
    const char* name;
    std::function<fs::path(const TemporaryFolder&)> make;
    const char* reason;
    bool unprivileged = false;
};

BadFile WithText(const char* name, std::string text, const char* reason) {
    return {name, [=](const TemporaryFolder& folder) { return folder.Write("bad.synthex", text); }, reason};
}

fs::path Sparse(const TemporaryFolder& folder) {
    const fs::path path = folder.Write("bad.synthex", "{");
    fs::resize_file(path, std::uintmax_t{5} << 30);
    return path;
}

fs::path Fifo(const TemporaryFolder& folder) {
    const fs::path path = folder.Path() / "bad.synthex";
    ::mkfifo(path.c_str(), 0600);
    return path;
}

fs::path Unreadable(const TemporaryFolder& folder) {
    const fs::path path = folder.Write("bad.synthex", Settings(""));
    ::chmod(path.c_str(), 0);
    return path;
}

std::string Nested(std::size_t levels) {
    return R"({"mFramePAR":)" + std::string(levels, '[') + std::string(levels, ']') + "}";
}

TEST(Info, BadFilesAreRefusedWithNameAndReason) {
    const BadFile kRows[] = {
        {"missing", [](const TemporaryFolder& folder) { return folder.Path() / "bad.synthex"; },
         "no such file"},
        {"unreadable", Unreadable, "not allowed to read", true},
        {"folder", [](const TemporaryFolder& folder) { return folder.Path(); }, "this is a folder"},
        {"FIFO", Fifo, "a pipe or a device"},
        {"device", [](const TemporaryFolder&) { return fs::path("/dev/zero"); }, "a pipe or a device"},
        {"5 GB", Sparse, "5368709120 bytes"},
        WithText("empty", "", "JSON not well-formed"),
        WithText("malformed", R"({"mFrameWidth":)", "JSON not well-formed"),
        WithText("byte-order mark", "\xEF\xBB\xBF{}", "JSON not well-formed"),
        WithText("zero bytes", std::string(1000, '\0'), "JSON not well-formed"),
        WithText("a list", "[]", "bad_any_cast"),
        WithText("a text for a number", R"({"mFrameWidth":"720"})", "bad_any_cast"),
        WithText("a number for an object", R"({"mFramePAR":1})", "bad_any_cast"),
        WithText("500 levels", Nested(500), "JSON not well-formed"),
        WithText("100000 levels", Nested(100000), "JSON not well-formed"),
    };
    for (const BadFile& row : kRows) {
        SCOPED_TRACE(row.name);
        if (row.unprivileged && !RunsUnprivileged()) continue;
        const TemporaryFolder folder;
        const std::string path = row.make(folder);
        const ProcessOptions options{.addressSpace = IsSanitized() ? 0 : 256u << 20,
                                     .unprivileged = row.unprivileged};
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"info", path}, {"render", path, folder.Path() / "out.raw"}}) {
            const ProcessResult result = RunSynthex(arguments, options);
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.out, "");
            EXPECT_THAT(result.err,
                        AllOf(StartsWith("synthex: " + path + ": "), HasSubstr(row.reason), EndsWith(".\n")));
            EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
            EXPECT_TRUE(IsSanitized() || result.peakMiB < kFlatMiB) << result.peakMiB;
        }
        EXPECT_THAT(folder.Names(), Each("bad.synthex"));
    }
}

TEST(Info, WhatFollowsAZeroByteIsNotRead) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings("") + '\0' + "{ this is not JSON");
    const ProcessResult result = RunSynthex({"info", "--json", clip});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(ordered_json::parse(result.out).at("width"), 64);
}

TEST(Info, WhatCanNotBeRenderedIsDescribedAndRefused) {
    struct Row {
        const char* members;
        const char* key;
        ordered_json value;
        const char* reason;
    };
    const Row kRows[] = {
        {R"(,"mPixelFormat":305419896)", "pixelFormat", "0x12345678", "no pixel format 0x12345678"},
        {R"(,"mPixelFormat":305419896)", "deliveredFormat", nullptr, "no pixel format 0x12345678"},
        {R"(,"mFrameWidth":0)", "width", 0, "0 x 48"},
        {R"(,"mFrameHeight":4294967295)", "height", 4294967295, "64 x 4294967295"},
        {R"(,"mFrameWidth":-1)", "width", 4294967295, "4294967295 x 48"},
        {R"(,"mFrameWidth":70000,"mFrameHeight":70000)", "height", 70000, "70000 x 70000"},
        {R"(,"mVideoFrameRate":{"ticksperframe":0})", "scale", 0, "no frame rate"},
        {R"(,"mVideoFrameRate":{"ticksperframe":-8467200000})", "frames", 0, "no frame rate"},
        {R"(,"mVideoDuration":{"ticks":0})", "frames", 0, "no duration"},
        {R"(,"mVideoDuration":{"ticks":-9223372036854775808})", "frames", 0, "no duration"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.members);
        const TemporaryFolder folder;
        const fs::path clip = folder.Write("clip.synthex", Settings(row.members));
        const ProcessResult facts = RunSynthex({"info", "--json", clip});
        EXPECT_EQ(facts.status, 0) << facts.err;
        EXPECT_EQ(ordered_json::parse(facts.out).at(row.key), row.value);
        EXPECT_THAT(RunSynthex({"info", clip}).out,
                    AllOf(HasSubstr("Not renderable"), HasSubstr(row.reason)));

        const ProcessResult render = RunSynthex({"render", clip, folder.Path() / "out.png"});
        EXPECT_EQ(render.status, 1);
        EXPECT_THAT(render.err, AllOf(StartsWith("synthex: " + clip.string() + ": "), HasSubstr(row.reason)));
        EXPECT_THAT(folder.Names(), testing::ElementsAre("clip.synthex"));
    }
}

} // namespace
