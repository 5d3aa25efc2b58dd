// Faults sought: a path that makes the host wait or fill memory, a save that loses the old file or leaves
// rubbish.
#include "Mosk.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Mosk::File;

class MoskFile : public testing::Test {
  protected:
    MoskFile() : mFolder(fs::path(testing::TempDir()) / ("mosk" + std::to_string(::getpid()))) {
        fs::create_directories(mFolder);
    }
    ~MoskFile() override {
        fs::permissions(mFolder, fs::perms::owner_all);
        fs::remove_all(mFolder);
    }

    fs::path Make(const std::string& name, const std::string& text) const {
        std::ofstream(mFolder / name) << text;
        return mFolder / name;
    }

    static std::string TextOf(const fs::path& path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

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

    std::size_t FilesLeft() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(mFolder), fs::directory_iterator()));
    }

    fs::path mFolder;
};

TEST_F(MoskFile, OpensRegularFilesOnlyAndNeverWaits) {
    ASSERT_EQ(::mkfifo((mFolder / "pipe").c_str(), 0600), 0);
    const fs::path sparse = Make("sparse", "");
    fs::resize_file(sparse, 5ull << 30);
    fs::create_symlink(Make("real", "text"), mFolder / "link");
    EXPECT_EQ(Open(mFolder / "pipe"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open(mFolder), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open("/dev/zero"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Open(sparse), Mosk::kResult_TooLarge);
    EXPECT_EQ(Open(mFolder / "none"), Mosk::kResult_NotFound);
    EXPECT_EQ(Open(mFolder / "link"), Mosk::kResult_OK);
    for (const char* const name : {"pipe", "none", "."})
        EXPECT_FALSE(Mosk::PathUtils::ExistsOnDisk(Mosk::FromUTF8((mFolder / name).string()))) << name;
    EXPECT_TRUE(Mosk::PathUtils::ExistsOnDisk(Mosk::FromUTF8((mFolder / "link").string())));
    EXPECT_EQ(Mosk::PathUtils::GetFilePart(u"/a/b.synthex"), u"b.synthex");
    EXPECT_EQ(Mosk::PathUtils::GetFilePart(u"b"), u"b");
}

TEST_F(MoskFile, SaveReplacesTheWholeTextAndKeepsTheMode) {
    const fs::path target = Make("clip", "a much longer old text");
    fs::permissions(target, fs::perms(0640));
    EXPECT_EQ(Save(target, "new"), Mosk::kResult_OK);
    EXPECT_EQ(TextOf(target), "new");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));

    const mode_t mask = ::umask(027);
    EXPECT_EQ(Save(mFolder / "fresh \xC3\xA9", "text"), Mosk::kResult_OK);
    ::umask(mask);
    EXPECT_EQ(fs::status(mFolder / "fresh \xC3\xA9").permissions(), fs::perms(0640));
    EXPECT_EQ(FilesLeft(), 2u);
}

TEST_F(MoskFile, ASymbolicLinkKeepsPointing) {
    const fs::path target = Make("clip", "old");
    fs::create_symlink("clip", mFolder / "link");
    fs::create_symlink("fresh", mFolder / "dangling");
    EXPECT_EQ(Save(mFolder / "link", "new"), Mosk::kResult_OK);
    EXPECT_EQ(Save(mFolder / "dangling", "new"), Mosk::kResult_OK);
    EXPECT_TRUE(fs::is_symlink(mFolder / "link") && fs::is_symlink(mFolder / "dangling"));
    EXPECT_EQ(TextOf(target), "new");
    EXPECT_EQ(TextOf(mFolder / "fresh"), "new");
}

TEST_F(MoskFile, NothingHappensWithoutAWrite) {
    const fs::path target = Make("clip", "old");
    {
        File file;
        ASSERT_EQ(Create(file, target), Mosk::kResult_OK);
    }
    EXPECT_EQ(TextOf(target), "old");
    EXPECT_EQ(FilesLeft(), 1u);
    EXPECT_EQ(Save(mFolder, "x"), Mosk::kResult_NotAFile);
    EXPECT_EQ(Save(mFolder / "none" / "clip", "x"), Mosk::kResult_NotFound);
    EXPECT_EQ(Save("/dev/full", "x"), Mosk::kResult_NotAFile);
}

/// Runs `body` in a child process and gives its exit status.
template <class Body>
int InChild(Body body) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(body());
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

TEST_F(MoskFile, ReadOnlyPlacesFail) {
    const fs::path target = Make("clip", "old");
    const fs::path locked = mFolder / "locked";
    fs::create_directory(locked);
    std::ofstream(locked / "clip") << "old";
    fs::permissions(target, fs::perms(0444));
    fs::permissions(locked, fs::perms(0555));
    fs::permissions(locked / "clip", fs::perms(0666));
    fs::permissions(mFolder, fs::perms(0777));
    EXPECT_EQ(InChild([&] {
                  if (::getuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) return 99;
                  return (Save(target, "new") == Mosk::kResult_AccessDenied ? 0 : 1) +
                         (Save(locked / "clip", "new") == Mosk::kResult_AccessDenied ? 0 : 2);
              }),
              0);
    EXPECT_EQ(TextOf(target), "old");
    EXPECT_EQ(TextOf(locked / "clip"), "old");
    EXPECT_EQ(FilesLeft(), 2u);
    fs::permissions(locked, fs::perms::owner_all);
}

TEST_F(MoskFile, AFullDiskLeavesTheOldFile) {
    const fs::path target = Make("clip", "old");
    EXPECT_EQ(InChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{10, 10};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return Save(target, "longer than ten bytes") == Mosk::kResult_DiskFull ? 0 : 1;
              }),
              0);
    EXPECT_EQ(TextOf(target), "old");
    EXPECT_EQ(FilesLeft(), 1u);
}

} // namespace
