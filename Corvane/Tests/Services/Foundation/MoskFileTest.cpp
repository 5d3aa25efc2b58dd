// Faults sought: a path that makes the host wait or fill memory, a save that loses the old file or leaves
// rubbish.
#include "Mosk.h"

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/TestFolder.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::ReadFile;
using Mosk::File;
using testing::ElementsAre;

class MoskFile : public testing::Test {
  protected:
    static Mosk::Result Open(const fs::path& path) {
        File file;
        return file.Open(Mosk::FromUTF8(path.string()), Mosk::FileAccessFlags::kRead);
    }
    static Mosk::Result Create(File& file, const fs::path& path) {
        return file.Create(Mosk::FromUTF8(path.string()), Mosk::FileAccessFlags::kReadWrite,
                           Mosk::FileShareModeFlags::kShareReadWrite,
                           Mosk::FileCreateDispositionFlags::kReplace, Mosk::FileAttributesFlags::kNormal,
                           false);
    }
    static Mosk::Result Save(const fs::path& path, const std::string& text) {
        File file;
        if (const Mosk::Result result = Create(file, path); result < 0) return result;
        std::uint32_t written = 0;
        const Mosk::Result result = file.Write(text.data(), static_cast<std::uint32_t>(text.size()), written);
        EXPECT_EQ(written, result < 0 ? 0u : text.size());
        return result;
    }

    const corvane::testing::TestFolder mFolder;
    const fs::path mClip = mFolder.Write("clip", "the old and longer text");
};

TEST_F(MoskFile, OpensRegularFilesOnlyAndNeverWaits) {
    ASSERT_EQ(::mkfifo((mFolder / "pipe").c_str(), 0600), 0);
    fs::resize_file(mFolder.Write("sparse", ""), 5ull << 30);
    fs::resize_file(mClip, File::kSizeLimit);
    fs::create_symlink(mClip, mFolder / "link");
    EXPECT_EQ(Open(mFolder / "pipe"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open(mFolder.Path()), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open("/dev/zero"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open(mFolder / "sparse"), Mosk::kResult_TooLarge);
    EXPECT_EQ(Open(mFolder / "none"), Mosk::kResult_NotFound);
    EXPECT_EQ(Open(mFolder / "link"), Mosk::kResult_OK);
    for (const char* const name : {"pipe", "none", ".", "link"})
        EXPECT_EQ(Mosk::PathUtils::ExistsOnDisk(Mosk::FromUTF8((mFolder / name).string())),
                  name == std::string("link"))
            << name;
    EXPECT_EQ(Mosk::PathUtils::GetFilePart(u"/a/b.synthex"), u"b.synthex");
    EXPECT_EQ(Mosk::PathUtils::GetFilePart(u"b"), u"b");
}

TEST_F(MoskFile, SaveReplacesTheWholeTextAndKeepsTheMode) {
    const fs::path fresh = mFolder / "fresh \xC3\xA9";
    fs::permissions(mClip, fs::perms(0640));
    EXPECT_EQ(Save(mClip, "new"), Mosk::kResult_OK);
    const mode_t mask = ::umask(027);
    EXPECT_EQ(Save(fresh, "text"), Mosk::kResult_OK);
    ::umask(mask);
    EXPECT_EQ(ReadFile(mClip), "new");
    for (const fs::path& path : {mClip, fresh}) EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    EXPECT_THAT(mFolder.Names(), ElementsAre("clip", "fresh \xC3\xA9"));
}

TEST_F(MoskFile, ASymbolicLinkKeepsPointing) {
    for (const char* const target : {"clip", "fresh"}) {
        fs::remove(mFolder / "link");
        fs::create_symlink(target, mFolder / "link");
        EXPECT_EQ(Save(mFolder / "link", "new"), Mosk::kResult_OK);
        EXPECT_TRUE(fs::is_symlink(mFolder / "link"));
        EXPECT_EQ(ReadFile(mFolder / target), "new");
    }
}

TEST_F(MoskFile, NothingHappensWithoutAWrite) {
    {
        File file;
        ASSERT_EQ(Create(file, mClip), Mosk::kResult_OK);
    }
    EXPECT_EQ(Save(mFolder.Path(), "x"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Save(mFolder / "none/clip", "x"), Mosk::kResult_NotFound);
    EXPECT_EQ(Save("/dev/full", "x"), Mosk::kResult_NotAFile);
    EXPECT_EQ(ReadFile(mClip), "the old and longer text");
    EXPECT_THAT(mFolder.Names(), ElementsAre("clip"));
}

TEST_F(MoskFile, ReadOnlyPlacesAndAFullDiskLeaveTheOldFile) {
    fs::create_directory(mFolder / "locked");
    const fs::path locked = mFolder.Write("locked/clip", "old");
    fs::permissions(mClip, fs::perms(0444));
    fs::permissions(locked, fs::perms(0666));
    fs::permissions(mFolder / "locked", fs::perms(0555));
    fs::permissions(mFolder.Path(), fs::perms(0777));
    {
        const corvane::testing::AsNobody nobody;
        EXPECT_EQ(Save(mClip, "new"), Mosk::kResult_AccessDenied);
        EXPECT_EQ(Save(locked, "new"), Mosk::kResult_AccessDenied);
    }
    fs::permissions(mClip, fs::perms(0644));
    {
        const corvane::testing::FullDisk full(10);
        EXPECT_EQ(Save(mClip, "longer than ten bytes"), Mosk::kResult_DiskFull);
    }
    EXPECT_EQ(ReadFile(mClip), "the old and longer text");
    EXPECT_EQ(ReadFile(locked), "old");
    EXPECT_THAT(mFolder.Names(), ElementsAre("clip", "locked"));
    fs::permissions(mFolder / "locked", fs::perms::owner_all);
}

} // namespace
