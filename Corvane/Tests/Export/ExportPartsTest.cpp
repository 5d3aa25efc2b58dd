// Faults sought: joined parts that differ from the export in one piece, parts that begin where a codec needs
// earlier frames, frames left out or twice, parts of something else that are taken, outputs that can't be
// joined and are only refused afterwards.
#include "Export/ExportParts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestClips.h"
#include "Tests/TestFolder.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

const std::atomic<bool> kGoOn{false};

ExportOptions OptionsOf(const fs::path& output, const std::string& codec = "") {
    ExportOptions options;
    options.output = output;
    options.codec = codec;
    return options;
}

/// Exports the parts of `whole` beside it, and returns them.
std::vector<ExportedPart> ExportInParts(const Clip& clip, const ExportOptions& whole, std::int64_t count) {
    std::vector<ExportedPart> files;
    const ExportParts parts = DivideExport(clip, whole, count);
    for (const auto& [first, last] : parts.frames) {
        ExportOptions part = whole;
        part.frames = {first, last};
        if (!parts.inPlace)
            part.output.replace_filename(fmt::format("part{}{}", first, whole.output.extension().string()));
        const ExportReport report = ExportClip(clip, part, {}, kGoOn);
        files.push_back({part.output, report.frames});
    }
    return files;
}

TEST(ExportParts, JoinedPartsAreTheBytesOfTheExportInOnePiece) {
    const struct {
        const char *name, *codec;
        std::size_t parts; // of 3 asked for
        int fieldType = 1;
        bool native = false;
    } rows[] = {{"a.raw", "", 3},         {"a.raw", "", 3, 0, true}, {"a.y4m", "", 3, 2},
                {"a.y4m", "444p10", 3},   {"a.mov", "prores", 3},    {"a.mov", "v210", 3, 2},
                {"a.mkv", "ffv1", 3, 0},  {"a.mkv", "ffv1:g=20", 2}, {"a.mkv", "prores", 3},
                {"a.nut", "ffv1:g=1", 3}, {"a.avi", "mjpeg", 3, 0},  {"a.mp4", "mjpeg", 3, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(fmt::format("{} {}", row.name, row.codec));
        const TestFolder folder;
        const auto clip = MakeClip({.width = 96, .height = 64, .fieldType = row.fieldType, .frames = 40});
        ExportOptions options = OptionsOf(folder / row.name, row.codec);
        options.native = row.native;
        ExportClip(*clip, options, {}, kGoOn);
        const std::string whole = ReadFile(options.output);
        fs::remove(options.output);
        const auto parts = ExportInParts(*clip, options, 3);
        EXPECT_EQ(parts.size(), row.parts);
        EXPECT_EQ(JoinExport(*clip, options, parts, {}, kGoOn).frames, 40);
        EXPECT_TRUE(ReadFile(options.output) == whole);
    }
}

TEST(ExportParts, PartsOfASeriesAreItsOwnFiles) {
    const TestFolder folder;
    const auto clip = MakeClip({.width = 16, .height = 16, .frames = 5});
    ExportOptions options = OptionsOf(folder / "%d.png");
    options.frames = {1, 4};
    ExportInParts(*clip, options, 3);
    EXPECT_THAT(folder.Names(), ::testing::ElementsAre("1.png", "2.png", "3.png", "4.png"));
}

TEST(ExportParts, WhatCantBeJoinedIsRefused) {
    const TestFolder folder;
    const auto clip = MakeClip({.width = 64, .height = 48, .frames = 30});
    for (const char* const name : {"a.mp4", "a.framemd5", "a.mkv"})
        EXPECT_THAT([&] { DivideExport(*clip, OptionsOf(folder / name), 2); },
                    ThrowsMessage<UsageFailure>(HasSubstr("can't be joined")))
            << name;
    for (const auto& [name, codec] :
         {std::pair("a.raw", ""), {"a.y4m", ""}, {"a.mkv", "ffv1"}, {"a.mov", "v210"}}) {
        SCOPED_TRACE(name);
        const ExportOptions options = OptionsOf(folder / name, codec);
        const auto parts = ExportInParts(*clip, options, 2);
        const auto refused = [&](std::vector<ExportedPart> given, const std::string& why) {
            EXPECT_THAT([&] { JoinExport(*clip, options, given, {}, kGoOn); },
                        ThrowsMessage<Failure>(HasSubstr(why)));
            EXPECT_FALSE(fs::exists(options.output));
        };
        refused({parts[0]}, "hold ");
        refused({parts[0], {parts[1].file, 30 - parts[0].frames - 1}}, parts[1].file.string());
        refused({parts[0], {folder / "gone", parts[1].frames}}, "gone");
        fs::resize_file(parts[0].file, fs::file_size(parts[0].file) / 3);
        refused(parts, parts[0].file.string());
        const auto other = MakeClip({.width = 48, .height = 64, .frames = 30});
        if (std::string_view(name) != "a.raw") // nothing in it tells its shape
            refused(ExportInParts(*other, options, 2), "not the part");
    }
}

} // namespace
} // namespace corvane::testing
