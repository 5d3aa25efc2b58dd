// Faults sought: a partial file under the final name, a temporary file left, a link replaced by a file, a
// mode lost, a name too long to have a temporary one beside it, a fault told as another.
#include "Services/Foundation/AtomicFile.h"
#include "Services/Foundation/AtomicSeries.h"

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/TestFolder.h"

namespace {

namespace fs = std::filesystem;
using corvane::AtomicFile;
using corvane::testing::ReadFile;
using testing::ElementsAre;

constexpr char kOldText[] = "the old and longer text";

std::span<const std::byte> Bytes(std::string_view text) {
    return std::as_bytes(std::span(text));
}

/// Makes that text the whole of that file. Returns why it fails, or what it loses.
std::string Save(const fs::path& path, std::string_view text) {
    try {
        AtomicFile file(path);
        file.Write(Bytes(text));
        return file.Commit();
    } catch (const corvane::FileError& error) {
        return error.what();
    }
}

class AtomicFileTest : public testing::Test {
  protected:
    const corvane::testing::TestFolder mFolder;
    const fs::path mOld = mFolder.Write("old", kOldText);
};

TEST_F(AtomicFileTest, ReplacesOrMakesWhatTheNameLeadsTo) {
    const std::string longest(255, 'n');
    fs::permissions(mOld, fs::perms(0604));
    fs::create_symlink("old", mFolder / "link");
    fs::create_symlink(mFolder / "new", mFolder / "dangling");
    const mode_t mask = ::umask(027);
    for (const std::string& name :
         {std::string("old"), std::string("link"), std::string("dangling"), longest}) {
        EXPECT_EQ(Save(mFolder / name, name), "");
        EXPECT_EQ(ReadFile(mFolder / name), name);
        EXPECT_EQ(fs::is_symlink(mFolder / name), name == "link" || name == "dangling");
        EXPECT_EQ(fs::status(mFolder / name).permissions(),
                  fs::perms(name == "old" || name == "link" ? 0604 : 0640));
    }
    ::umask(mask);
    EXPECT_THAT(mFolder.Names(), ElementsAre("dangling", "link", "new", longest, "old"));
}

TEST_F(AtomicFileTest, NothingHasItsNameBeforeAllHave) {
    fs::create_directory(mFolder / "other");
    fs::create_symlink("other/5", mFolder / "5");
    fs::create_hard_link(mOld, mFolder / "6");
    const auto pathOf = [this](std::int64_t number) { return mFolder / std::to_string(number); };
    const auto add = [&](corvane::AtomicSeries& series, std::int64_t number) {
        AtomicFile file(pathOf(number));
        file.Write(Bytes(std::to_string(number)));
        series.Add(number, std::move(file));
    };
    {
        corvane::AtomicSeries series(pathOf), abandoned(pathOf);
        for (const int number : {1, 2, 3, 5, 6, 8, 9}) {
            add(series, number);
            if (number == 2) add(abandoned, number);
        }
        EXPECT_EQ(ReadFile(mFolder / "6"), kOldText);
        EXPECT_FALSE(fs::exists(mFolder / "1") || fs::exists(mFolder / "5"));
        series.Commit();
        EXPECT_EQ(series.WhatIsLost(), "its other names (hard links) keep the older file (6)");
    }
    EXPECT_THAT(mFolder.Names(), ElementsAre("1", "2", "3", "5", "6", "8", "9", "old", "other"));
    for (const int number : {1, 2, 3, 5, 6, 8, 9})
        EXPECT_EQ(ReadFile(pathOf(number)), std::to_string(number));
    EXPECT_TRUE(fs::is_symlink(mFolder / "5"));
}

TEST_F(AtomicFileTest, SaysWhyItFailsAndLeavesEverything) {
    for (const char* const name : {"locked", "closed"}) fs::create_directory(mFolder / name);
    const fs::path inLocked = mFolder.Write("locked/file", "x"), readOnly = mFolder.Write("read-only", "x");
    fs::permissions(inLocked, fs::perms(0666));
    fs::permissions(readOnly, fs::perms(0444));
    for (const char* const name : {"locked", "closed"}) fs::permissions(mFolder / name, fs::perms(0555));
    fs::permissions(mFolder.Path(), fs::perms(0777));
    fs::create_symlink("circle", mFolder / "circle");
    // Where all may write, a link of somebody else's may lead anywhere.
    fs::create_directory(mFolder / "all");
    fs::permissions(mFolder / "all", fs::perms(01777));
    fs::create_symlink(mFolder / "planted", mFolder / "all/link");
    const bool root = ::lchown((mFolder / "all/link").c_str(), 1, 1) == 0;
    const std::vector<std::string> names = mFolder.Names();
    const std::pair<fs::path, const char*> kRows[] = {
        {mFolder.Path(), "this is a folder"},
        {"/dev/full", "a device"},
        {mFolder / "none/file", "does not exist"},
        {mFolder / "old/file", "is no folder"},
        {mFolder / "circle", "in a circle"},
        {mFolder / std::string(256, 'n'), "File name too long"},
        {mFolder / "closed/file", "closed may not be written to"},
        {inLocked, "the file may be written, but"},
        {readOnly, "read-only"},
    };
    {
        const corvane::testing::AsNobody nobody;
        for (const auto& [path, why] : kRows) EXPECT_THAT(Save(path, "new"), testing::HasSubstr(why)) << path;
    }
    if (root) {
        EXPECT_THAT(Save(mFolder / "all/link", "new"), testing::HasSubstr("another user"));
    }
    {
        AtomicFile half(mOld);
        half.Write(Bytes("half"));
        half.Close(); // has a temporary name then
    }
    EXPECT_EQ(ReadFile(mOld), kOldText);
    EXPECT_EQ(mFolder.Names(), names);
    for (const char* const name : {"locked", "closed"}) fs::permissions(mFolder / name, fs::perms(0755));
    EXPECT_TRUE(fs::is_empty(mFolder / "closed"));
}

TEST_F(AtomicFileTest, AProcessThatEndsInTheMiddleLeavesNothing) {
    const auto end = [&](int signal) {
        AtomicFile file(mFolder / "new"), closed(mFolder / "closed"), done(mOld);
        closed.Close();
        done.Close();
        corvane::AtomicSeries series([&](std::int64_t) { return mFolder / "some"; });
        series.Add(0, AtomicFile(mFolder / "some"));
        EXPECT_EQ(done.Commit(), "");
        if (signal != 0) ::raise(signal);
        std::exit(0);
    };
    AtomicFile parents(mOld);
    parents.Close();
    EXPECT_EXIT(end(0), testing::ExitedWithCode(0), "");
    EXPECT_EQ(mFolder.Names().size(), 2u);
    EXPECT_EXIT(end(SIGKILL), testing::KilledBySignal(SIGKILL), "");
    // A killed process can't tidy up; whoever writes there next does, and takes nothing from the living.
    { const AtomicFile next(mFolder / "./next"); }
    EXPECT_EQ(parents.Commit(), "");
    EXPECT_THAT(mFolder.Names(), ElementsAre("old"));
}

TEST_F(AtomicFileTest, OfAnOlderFileTheOwnerIsKeptAndTheRestIsSaid) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    ASSERT_EQ(::chown(mOld.c_str(), 65534, 65534), 0);
    fs::permissions(mOld, fs::perms(04711));
    EXPECT_EQ(Save(mOld, "new"), "");
    struct stat status {};
    ::stat(mOld.c_str(), &status);
    EXPECT_THAT((std::vector{status.st_uid, status.st_gid, status.st_mode & 07777}),
                ElementsAre(65534, 65534, 04711));
    fs::create_hard_link(mOld, mFolder / "other");
    EXPECT_THAT(Save(mOld, "newer"), testing::HasSubstr("hard links"));
}

} // namespace
