// Faults sought: a partial file under the final name, a temporary file left, a link replaced by a file, a
// mode lost, an error that kills or names neither file nor remedy.
#include "Export/OutputFile.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestFrames.h"

namespace {

namespace fs = std::filesystem;
using corvane::OutputFile;
using corvane::testing::ReadFile;
using corvane::testing::TestFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::span<const std::byte> Bytes(std::string_view text) {
    return std::as_bytes(std::span(text));
}

template <class Action>
std::string FailureOf(Action action) {
    try {
        action();
    } catch (const corvane::Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(OutputFile, TheOldFileStaysUntilTheNewOneIsComplete) {
    TestFolder folder;
    std::ofstream(folder / "out") << "old";
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
    std::ofstream(folder / "file") << "x";
    EXPECT_THAT(FailureOf([&] { OutputFile file(folder.Path()); }),
                AllOf(HasSubstr("is a folder"), HasSubstr("name a file")));
    EXPECT_THAT(FailureOf([&] { OutputFile file(folder / "no/such/out.y4m"); }),
                AllOf(HasSubstr("out.y4m"), HasSubstr("does not exist; make it first")));
    EXPECT_THAT(FailureOf([&] { OutputFile file(folder / "file/out.y4m"); }), HasSubstr("is no folder"));
    EXPECT_THAT(FailureOf([&] {
                    OutputFile file("/dev/full"), &full = file;
                    full.Write(Bytes("x"));
                }),
                AllOf(HasSubstr("/dev/full"), HasSubstr("disk is full; free some space")));
}

// In a child, as nobody: root may write anywhere.
TEST(OutputFile, ReadOnlyFoldersAndFilesAreRefused) {
    TestFolder folder;
    std::ofstream(folder / "file") << "x";
    chmod((folder / "file").c_str(), 0444);
    chmod(folder.Path().c_str(), 0555);
    const auto asNobody = [&](const fs::path& path) {
        if (geteuid() == 0 && seteuid(65534) != 0) _exit(2);
        const std::string failure = FailureOf([&] { OutputFile file(path); });
        const bool named =
            failure.find(path.string()) == 0 && failure.find("no failure") == std::string::npos;
        _exit(named && failure.find("; ") != std::string::npos ? 0 : 1);
    };
    EXPECT_EXIT(asNobody(folder / "file"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(asNobody(folder / "new"), testing::ExitedWithCode(0), "");
    chmod(folder.Path().c_str(), 0755);
}

TEST(OutputFile, AFileOverTheSizeLimitFailsAndLeavesNothing) {
    TestFolder folder;
    const auto limited = [&] {
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        const corvane::WriteSignalGuard guard;
        const std::string failure = FailureOf([&] {
            OutputFile file(folder / "out");
            for (int i = 0; i < 3; ++i) file.Write(Bytes(std::string(3000, 'x')));
            file.Commit();
        });
        _exit(failure.find("size limit") != std::string::npos ? 0 : 1);
    };
    EXPECT_EXIT(limited(), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(folder.Names().empty());
}

TEST(OutputFile, APipeIsWrittenAsItIsAndAClosedOneIsAFailure) {
    TestFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int reader = open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    const corvane::WriteSignalGuard guard;
    OutputFile file(folder / "pipe");
    EXPECT_FALSE(file.IsRegular());
    file.Write(Bytes("abc"));
    char read3[3];
    EXPECT_EQ(read(reader, read3, 3), 3);
    EXPECT_EQ(std::string(read3, 3), "abc");
    close(reader);
    EXPECT_THAT(FailureOf([&] { file.Write(Bytes("more")); }), HasSubstr("the reader closed the pipe"));
    EXPECT_THAT(folder.Names(), ElementsAre("pipe"));
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
