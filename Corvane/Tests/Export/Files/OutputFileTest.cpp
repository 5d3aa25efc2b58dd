// Faults sought: a partial file under the final name, a temporary file left, a link replaced by a file, a
// mode lost, an error that kills or names neither file nor remedy.
#include "Export/Files/OutputFile.h"

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/Picture/TestFrames.h"

namespace {

namespace fs = std::filesystem;
using corvane::OutputFile;
using corvane::testing::ReadFile;
using corvane::testing::TestFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::span<const std::byte> Bytes(std::string_view text) {
    return std::as_bytes(std::span(text));
}

/// Writing those bytes to that file fails with a sentence that begins with its name and goes on so.
void ExpectFailure(const fs::path& path, std::size_t bytes, const char* sentence) {
    EXPECT_THAT(
        [&] {
            OutputFile file(path);
            for (; bytes > 0; bytes -= 100) file.Write(Bytes(std::string(100, 'x')));
            file.Commit();
        },
        testing::ThrowsMessage<corvane::Failure>(AllOf(StartsWith(path.string()), HasSubstr(sentence))));
}

TEST(OutputFile, TheOldFileStaysUntilTheNewOneIsComplete) {
    TestFolder folder;
    folder.Write("out", "old");
    chmod((folder / "out").c_str(), 0640);
    fs::create_symlink("out", folder / "link");
    {
        OutputFile abandoned(folder / "link");
        abandoned.Write(Bytes("half"));
    }
    EXPECT_EQ(ReadFile(folder / "out"), "old");
    EXPECT_THAT(folder.Names(), ElementsAre("link", "out"));
    {
        OutputFile file(folder / "link");
        file.Write(Bytes("new"));
        EXPECT_EQ(ReadFile(folder / "out"), "old");
        file.Commit();
    }
    EXPECT_EQ(ReadFile(folder / "out"), "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(fs::status(folder / "out").permissions(), static_cast<fs::perms>(0640));
    EXPECT_THAT(folder.Names(), ElementsAre("link", "out"));
}

TEST(OutputFile, ANewFileHasTheUsualModeAndADanglingLinkIsFollowed) {
    TestFolder folder;
    const mode_t mask = umask(027);
    fs::create_symlink("target", folder / "link");
    OutputFile file(folder / "link");
    file.Commit();
    umask(mask);
    EXPECT_THAT(folder.Names(), ElementsAre("link", "target"));
    EXPECT_EQ(fs::status(folder / "target").permissions(), static_cast<fs::perms>(0640));
}

TEST(OutputFile, NamesTheFileAndTheRemedy) {
    TestFolder folder;
    fs::permissions(folder.Write("file", "x"), fs::perms(0444));
    ExpectFailure(folder.Path(), 0, "name a file");
    ExpectFailure(folder / "no/such/out.y4m", 0, "does not exist; make it first");
    ExpectFailure(folder / "file/out.y4m", 0, "is no folder");
    ExpectFailure("/dev/full", 100, "disk is full; free some space");
    {
        const corvane::testing::FullDisk full(4096);
        const corvane::WriteSignalGuard guard;
        ExpectFailure(folder / "out", 9000, "size limit");
    }
    {
        const corvane::testing::AsNobody nobody;
        ExpectFailure(folder / "file", 0, "; ");
        ExpectFailure(folder / "new", 0, "; ");
    }
    EXPECT_THAT(folder.Names(), ElementsAre("file"));
}

TEST(OutputFile, AProcessThatEndsInTheMiddleLeavesNothing) {
    const TestFolder folder;
    const auto end = [&] {
        OutputFile file(folder / "file");
        file.Write(Bytes("half"));
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
    EXPECT_THAT(folder.Names(), testing::IsEmpty());
}

} // namespace
