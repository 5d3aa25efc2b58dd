// Faults sought: a choice that is offered and then fails, one that is refused although it works, a reason
// that is not the true one, alpha lost without a word.
#include "Export/ExportChoices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestClips.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

namespace fs = std::filesystem;
using corvane::ExportChoice;
using corvane::ExportNaming;
using corvane::FindExportChoice;
using corvane::testing::Settings;
using corvane::testing::TestFolder;

constexpr int kFrames = 3;
constexpr std::uint32_t kFloatX = CvPixelFormat_XRGB_4444_32f;

/// Reads the frames again, with an independent program where there is one for the format.
void ExpectReadsAgain(const TestFolder& folder, const ExportChoice& choice, const corvane::Clip& clip,
                      bool alpha) {
    const std::size_t frames = choice.naming == ExportNaming::kPicture ? 1 : kFrames;
    const std::string format = choice.format;
    const fs::path file = folder / folder.Names().at(0);
    EXPECT_EQ(folder.Names().size(), choice.naming == ExportNaming::kPictures ? frames : 1);
    EXPECT_GT(fs::file_size(file), 0u);
    if (format == "framemd5") {
        const std::string text = corvane::testing::ReadFile(file);
        int lines = 0;
        for (std::size_t at = text.find("\n0, "); at != text.npos; at = text.find("\n0, ", at + 1)) ++lines;
        EXPECT_EQ(lines, kFrames);
    } else if (format != "raw") {
        auto found = corvane::testing::Probe(file, "stream=nb_read_frames,pix_fmt,width");
        EXPECT_EQ(found["nb_read_frames"], format == "png" ? "1" : std::to_string(frames));
        EXPECT_EQ(found["width"], std::to_string(clip.Info().width));
        const auto holds = [&](const char* name) { return found["pix_fmt"].find(name) != std::string::npos; };
        EXPECT_EQ(holds("yuva") || holds("bgra") || holds("rgba") || holds("gbrap"), alpha)
            << found["pix_fmt"];
    }
}

/// Exports the clip by every choice, and compares with what was said of it.
void ExpectTrue(const Settings& settings, std::size_t unfit) {
    const auto clip = corvane::testing::MakeClip(settings);
    const bool hasAlpha = settings.pixelFormat != kFloatX;
    std::size_t refused = 0;
    for (const ExportChoice& choice : corvane::ExportChoices()) {
        SCOPED_TRACE(fmt::format("{} of {}x{}", choice.id, settings.width, settings.height));
        const TestFolder folder;
        corvane::ExportOptions options = choice.OptionsFor(*clip);
        options.output = CompletedPath(folder / "out", choice);
        const corvane::ExportPreview preview = PreviewExport(*clip, options);
        EXPECT_EQ(choice.WhyNot(*clip), preview.whyNot);
        std::string failure;
        try {
            corvane::ExportClip(*clip, options, {}, std::atomic<bool>{false});
            ExpectReadsAgain(folder, choice, *clip, hasAlpha && !preview.dropsAlpha);
        } catch (const corvane::Failure& thrown) {
            failure = thrown.what();
        }
        refused += !failure.empty();
        EXPECT_EQ(failure.empty(), preview.whyNot.empty()) << failure << preview.whyNot;
        EXPECT_THAT(failure, testing::EndsWith(preview.whyNot));
        EXPECT_EQ(folder.Names().empty(), !failure.empty());
    }
    EXPECT_EQ(refused, unfit);
}

TEST(ExportChoices, WhatTheySayOfAClipIsTrue) {
    ExpectTrue({.width = 64, .height = 48, .frames = kFrames}, 0);
    // H.264 of interlaced 4:2:0 needs multiples of 4.
    ExpectTrue({.pixelFormat = CvPixelFormat_VUYA_4444_32f_709, .width = 64, .height = 46, .frames = kFrames},
               3);
    ExpectTrue({.pixelFormat = kFloatX, .width = 47, .height = 33, .fieldType = 0, .frames = kFrames}, 4);
    ExpectTrue({.width = 2, .height = 16388, .fieldType = 0, .frames = kFrames}, 3);
}

TEST(ExportChoices, NamesAreCompletedAsTheChoiceNeedsThem) {
    const ExportChoice& movie = *FindExportChoice("mp4-h264");
    const ExportChoice& pictures = *FindExportChoice("png-pictures");
    EXPECT_EQ(FindExportChoice("nothing"), nullptr);
    EXPECT_EQ(CompletedPath("/a.b/clip.MP4", movie), "/a.b/clip.MP4");
    EXPECT_EQ(CompletedPath("/a.b/clip.png", movie), "/a.b/clip.png.mp4");
    EXPECT_EQ(CompletedPath("/a.b/clip", pictures), "/a.b/clip.%05d.png");
    EXPECT_EQ(CompletedPath("/a.b/%d clip.png", pictures), "/a.b/%d clip.png");
    EXPECT_THROW(CompletedPath("50%.png", pictures), corvane::UsageFailure);
    EXPECT_EQ(ProposedFileName("a/b 50%\n", pictures), "a_b 50__.%05d.png");
    EXPECT_EQ(ProposedFileName("", movie), "clip.mp4");
    // 2 bytes a letter, one of which stands across the end of the room.
    std::string letters = "x";
    for (int i = 0; i < 150; ++i) letters += "\xC3\xA4";
    EXPECT_EQ(ProposedFileName(letters, movie), letters.substr(0, 199) + ".mp4");
}

} // namespace
