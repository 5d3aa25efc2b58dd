// Faults sought: a path that makes the host wait or fill memory, a result that stands for another fault.
#include "Mosk.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "Tests/TestFolder.h"

namespace {

namespace fs = std::filesystem;
using Mosk::File;
using Mosk::FileCreateDispositionFlags;

class MoskFile : public testing::Test {
  protected:
    static Mosk::Result Open(const fs::path& path) {
        File file;
        return file.Open(Mosk::FromUTF8(path.string()), Mosk::FileAccessFlags::kRead);
    }
    static Mosk::Result Save(const fs::path& path,
                             FileCreateDispositionFlags disposition = FileCreateDispositionFlags::kReplace) {
        File file;
        Mosk::Result result = file.Create(Mosk::FromUTF8(path.string()), Mosk::FileAccessFlags::kReadWrite,
                                          Mosk::FileShareModeFlags::kShareReadWrite, disposition,
                                          Mosk::FileAttributesFlags::kNormal, false);
        if (result < 0) return result;
        std::uint32_t written = 7;
        result = file.Write("sixteen letters!", 16, written);
        EXPECT_EQ(written, result < 0 ? 0u : 16u);
        return result;
    }

    const corvane::testing::TestFolder mFolder;
    const fs::path mClip = mFolder.Write("clip", "old");
};

TEST_F(MoskFile, OpensRegularFilesOnlyAndNeverWaits) {
    ASSERT_EQ(::mkfifo((mFolder / "pipe").c_str(), 0600), 0);
    fs::resize_file(mClip, File::kSizeLimit);
    fs::create_symlink(mClip, mFolder / "link");
    EXPECT_EQ(Open("/dev/zero"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open(mFolder / "link"), Mosk::kResult_OK);
    for (const char* const name : {"pipe", "none", ".", "link"})
        EXPECT_EQ(Mosk::PathUtils::ExistsOnDisk(Mosk::FromUTF8((mFolder / name).string())),
                  name == std::string("link"))
            << name;
    EXPECT_EQ(Mosk::PathUtils::GetFilePart(u"/a/b.synthex"), u"b.synthex");
    EXPECT_EQ(Mosk::PathUtils::GetFilePart(u"b"), u"b");
}

TEST_F(MoskFile, SavingAnswersWhatBecameOfIt) {
    const fs::path readOnly = mFolder.Write("read-only", "old");
    fs::permissions(readOnly, fs::perms(0444));
    {
        const corvane::testing::AsNobody nobody;
        EXPECT_EQ(Save(readOnly), Mosk::kResult_AccessDenied);
    }
    {
        const corvane::testing::FullDisk full(10);
        EXPECT_EQ(Save(mClip), Mosk::kResult_DiskFull);
    }
    EXPECT_EQ(Save(mFolder.Path()), Mosk::kResult_NotAFile);
    EXPECT_EQ(Save(mFolder / "none/clip"), Mosk::kResult_NotFound);
    EXPECT_EQ(Save(mClip, FileCreateDispositionFlags::kFailIfExists), Mosk::kResult_Failed);
    EXPECT_EQ(corvane::testing::ReadFile(mClip), "old");
    for (const fs::path& path : {mClip, mFolder / "new \xC3\xA9"}) {
        EXPECT_EQ(Save(path), Mosk::kResult_OK);
        EXPECT_EQ(corvane::testing::ReadFile(path), "sixteen letters!");
    }
}

} // namespace
