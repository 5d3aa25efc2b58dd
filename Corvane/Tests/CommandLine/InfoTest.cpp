// Faults sought: facts that differ from the file's, JSON that a reader can't take, bad files that hang,
// crash, eat memory, pass for good ones or are refused without a name and a reason.
#include <algorithm>
#include <sstream>

#include <sys/stat.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using testing::AllOf;
using testing::HasSubstr;

constexpr std::int64_t kFlatMiB = 40;

TEST(Info, SaysWhatTheSamplesAreAndEachRenders) {
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
    const TestFolder folder;
    std::istringstream lines(result.out);
    std::string line;
    for (const Row& row : kRows) {
        ASSERT_TRUE(std::getline(lines, line)) << row.name;
        EXPECT_EQ(
            line,
            fmt::format(
                R"({{"path":"{}","width":{},"height":{},"parNumerator":{},"parDenominator":{},"fieldType":{},)"
                R"("depth":32,"scale":{},"sampleSize":{},"duration":{},"frames":{},)"
                R"("pixelFormat":"CvPixelFormat_{}","deliveredFormat":"CvPixelFormat_{}"}})",
                Sample(row.name), row.width, row.height, row.parNumerator, row.parDenominator, row.fieldType,
                row.scale, row.sampleSize, row.frames * row.sampleSize, row.frames, row.pixelFormat,
                row.deliveredFormat));
        const ProcessResult picture =
            RunSynthex({"render", Sample(row.name), folder / "a.png", "--frames", "49"});
        EXPECT_THAT(picture.out, testing::HasSubstr("a.png: 1 frame, ")) << picture.err;
    }
    EXPECT_FALSE(std::getline(lines, line));
}

TEST(Info, TellsPeopleTheSame) {
    EXPECT_EQ(RunSynthex({"info", Sample("wrapped-document")}).out, Sample("wrapped-document") + R"(
  Size           720 x 480
  Pixel aspect   10:11, shown at 655 x 480
  Field order    lower field first
  Rate           29.97 fps (30000/1001)
  Duration       00:00:10.010 (300 frames)
  Pixel format   CvPixelFormat_BGRA_4444_8u (bgra, 0x61726762)
  Delivered as   CvPixelFormat_BGRA_4444_8u (bgra, 0x61726762)
)");
}

TEST(Info, JSONHoldsWhateverThePathHolds) {
    const TestFolder folder;
    const fs::path odd = folder.Write("a \"quoted\" \\ name\n\x01 \xC3\xA9.synthex", SettingsText());
    const ProcessResult result = RunSynthex({"info", "--json", odd});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 1);
    EXPECT_EQ(ordered_json::parse(result.out).at("path"), odd.string());
    EXPECT_THAT(RunSynthex({"info", odd}).out,
                HasSubstr("/a \"quoted\" \\ name\\n\\x01 \xC3\xA9.synthex\n  Size"));
    ExpectRefused({"info", "--json", folder.Write("\xFF.synthex", SettingsText())}, 1, "", "rename the file");
}

TEST(Info, TriesAllClipsAndReturnsTheWorst) {
    const ProcessResult result =
        RunSynthex({"info", "--json", Sample("defaults"), "missing.synthex", Sample("uhd-5994")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 2);
    EXPECT_EQ(result.err, "synthex: missing.synthex: there is no such file.\n");
}

TEST(Info, BadFilesAreRefusedWithNameAndReason) {
    const TestFolder folder;
    const std::string nested(100000, '[');
    const char* const malformed = "JSON not well-formed";
    fs::permissions(folder.Write("unreadable", SettingsText()), fs::perms::none);
    fs::resize_file(folder.Write("large", "{"), (1u << 20) + 1);
    ::mkfifo((folder / "FIFO").c_str(), 0600);
    const std::pair<fs::path, const char*> kRows[] = {
        {folder / "missing", "no such file"},
        {folder / "unreadable", "not allowed to read"},
        {folder.Path(), "this is a folder"},
        {folder / "FIFO", "a pipe or a device"},
        {"/dev/zero", "a pipe or a device"},
        {folder / "large", "1048577 bytes, more than the 1048576"},
        {folder.Write("empty", ""), malformed},
        {folder.Write("zero bytes", std::string(1000, '\0')), malformed},
        {folder.Write("a text for a number", R"({"mFrameWidth":"720"})"), "bad_any_cast"},
        {folder.Write("100000 levels", R"({"mFramePAR":)" + nested), malformed},
    };
    const std::vector<std::string> names = folder.Names();
    for (const auto& [path, reason] : kRows) {
        const bool unprivileged = path.filename() == "unreadable"; // root may read it
        if (unprivileged && !RunsUnprivileged()) continue;
        const ProcessOptions options{.addressSpace = IsSanitized() ? 0 : 256u << 20,
                                     .unprivileged = unprivileged};
        ExpectRefused({"info", path}, 1, path.string() + ": ", reason, options);
        ExpectRefused({"render", path, folder / "out.raw"}, 1, path.string() + ": ", reason, options);
        EXPECT_TRUE(IsSanitized() || RunSynthex({"info", path}, options).peakMiB < kFlatMiB) << path;
    }
    EXPECT_EQ(folder.Names(), names);
}

TEST(Info, WhatCanNotBeRenderedIsDescribedAndRefused) {
    const TestFolder folder;
    const fs::path clip =
        folder.Write("clip.synthex", SettingsText(R"(,"mPixelFormat":305419896,"mFrameWidth":-1)"));
    const auto facts = ordered_json::parse(RunSynthex({"info", "--json", clip}).out);
    EXPECT_EQ(facts.at("pixelFormat"), "0x12345678");
    EXPECT_EQ(facts.at("deliveredFormat"), nullptr);
    EXPECT_EQ(facts.at("width"), 4294967295);
    const char* const reason = "no pixel format 0x12345678";
    EXPECT_THAT(RunSynthex({"info", clip}).out, AllOf(HasSubstr("Not renderable"), HasSubstr(reason)));
    ExpectRefused({"render", clip, folder / "out.png"}, 1, clip.string() + ": ", reason);
    EXPECT_THAT(folder.Names(), testing::ElementsAre("clip.synthex"));
}

} // namespace
