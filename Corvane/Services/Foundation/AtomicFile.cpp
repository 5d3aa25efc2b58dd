#include "AtomicFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "TemporaryNames.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

fs::path FolderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// Why no file can be made in the folder of `path`, or given that name.
FileError NotMade(const fs::path& path, int error) {
    const fs::path folder = FolderOf(path);
    switch (error) {
    case ENOENT:
        return {Mosk::kResult_NotFound, fmt::format("the folder {} does not exist", folder.string()),
                "make it first"};
    case ENOTDIR:
        return {Mosk::kResult_NotFound, fmt::format("{} is no folder", folder.string()),
                "choose another place"};
    case EACCES:
    case EPERM:
    case EROFS:
        if (struct stat older{}; ::lstat(path.c_str(), &older) == 0)
            return {Mosk::kResult_AccessDenied,
                    fmt::format(
                        "the file may be written, but no file that replaces it can be made in the folder {}",
                        folder.string()),
                    "allow writing to the folder or choose another place"};
        return {Mosk::kResult_AccessDenied,
                fmt::format("the folder {} may not be written to", folder.string()), "choose another place"};
    default: return FileError::OfWriting(error);
    }
}

/// Throws if the file that `status` tells of can't be replaced.
void CheckTarget(const fs::path& path, const struct stat& status) {
    if (S_ISDIR(status.st_mode))
        throw FileError(Mosk::kResult_NotAFile, "this is a folder", "name a file in it");
    if (!S_ISREG(status.st_mode))
        throw FileError(Mosk::kResult_NotAFile, "this is a pipe or a device", "name a file");
    if (::access(path.c_str(), W_OK) != 0)
        throw FileError(Mosk::kResult_AccessDenied, "the file is read-only",
                        "allow writing to it or choose another name");
}

/// The path by which this process, and no other, finds an open file that need not have a name.
fs::path PathOf(const FileDescriptor& file) {
    return fmt::format("/proc/self/fd/{}", file.Get());
}

/// Gives an open file a name if it is free. False, with `errno` set, if that can't be done.
bool Link(const FileDescriptor& file, const fs::path& path) {
    return ::linkat(AT_FDCWD, PathOf(file).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

/// Whether `link` may be followed: by the rule that systems have for protected links, whether this one has
/// it turned on or not.
bool MayFollow(const fs::path& link, const struct stat& status) {
    struct stat folder {};
    constexpr mode_t kForAll = S_ISVTX | S_IWOTH;
    return ::stat(FolderOf(link).c_str(), &folder) != 0 || (folder.st_mode & kForAll) != kForAll ||
           status.st_uid == ::geteuid() || status.st_uid == folder.st_uid;
}

} // namespace

fs::path FollowLinks(fs::path path) {
    constexpr int kMostLinks = 40; // as the system has it
    struct stat status {};
    for (int links = 0; ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode); ++links) {
        if (!MayFollow(path, status))
            throw FileError(Mosk::kResult_AccessDenied,
                            "this is a link that another user put into a folder for all",
                            "name the file that is meant");
        std::error_code error;
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;
        if (links == kMostLinks)
            throw FileError(Mosk::kResult_NotFound, "its links lead in a circle", "choose another name");
        path = path.parent_path() / next; // an absolute one stands alone
    }
    return path;
}

std::string SavedText(const fs::path& path, const std::string& lost) {
    return fmt::format("{}: saved{}{}.", path.string(), lost.empty() ? "" : "; ", lost);
}

// By the private constructor: the destructor then runs if this one throws.
AtomicFile::AtomicFile(const fs::path& path, mode_t mode) : AtomicFile() {
    mPath = FollowLinks(path);
    struct stat older {};
    mReplaces = ::lstat(mPath.c_str(), &older) == 0;
    if (!mReplaces && errno != ENOENT) throw NotMade(mPath, errno);
    if (mReplaces) CheckTarget(mPath, older);
    // What replaces a file is nobody else's to read before it has that file's permissions.
    Open(mReplaces ? 0600 : mode);
    if (mReplaces) TakeOver(older);
}

AtomicFile::AtomicFile(AtomicFile&& other) noexcept
    : mPath(std::move(other.mPath)), mReplaces(other.mReplaces), mLost(std::move(other.mLost)),
      mTemporary(std::exchange(other.mTemporary, {})), mDescriptor(std::move(other.mDescriptor)) {}

AtomicFile::~AtomicFile() {
    if (mTemporary.empty()) return;
    ::unlink(mTemporary.c_str());
    TemporaryNames::Get().Forget(mTemporary);
}

void AtomicFile::Open(mode_t mode) {
    const fs::path folder = FolderOf(mPath);
    TemporaryNames::Get().Tidy(folder);
    mDescriptor = FileDescriptor(folder, O_RDWR | O_TMPFILE, mode);
    // Without its path it could not be given a name.
    if (mDescriptor && ::access(PathOf(mDescriptor).c_str(), F_OK) == 0) return;
    mTemporary = TemporaryNames::Get().Make(folder, [&](const fs::path& file) {
        mDescriptor = FileDescriptor(file, O_RDWR | O_CREAT | O_EXCL, mode);
        return bool(mDescriptor);
    });
    if (mTemporary.empty()) throw NotMade(mPath, errno);
}

void AtomicFile::TakeOver(const struct stat& older) {
    // Only root can give files away. To a group of one's own anybody can.
    const int file = mDescriptor.Get();
    struct stat status {};
    const bool given = ::fchown(file, older.st_uid, older.st_gid) == 0 ||
                       ::fchown(file, static_cast<uid_t>(-1), older.st_gid) == 0;
    const bool owned = ::fstat(file, &status) == 0 && status.st_uid == older.st_uid;
    if (::fchmod(file, older.st_mode & (given && owned ? 07777 : 0777)) != 0)
        throw FileError::OfWriting(errno);
    if (older.st_nlink > 1) mLost = "its other names (hard links) keep the older file";
    if (!owned) mLost += std::string(mLost.empty() ? "" : ", and ") + "it belongs to you now";
}

AtomicFile AtomicFile::Resume(const fs::path& path, std::uint64_t temporary) {
    AtomicFile file;
    file.mPath = path;
    file.mTemporary = TemporaryOf(path, temporary);
    return file;
}

fs::path AtomicFile::TemporaryOf(const fs::path& path, std::uint64_t number) {
    return TemporaryNames::Get().OfNumber(FolderOf(path), number);
}

fs::path AtomicFile::WorkingPath() const {
    return mTemporary.empty() ? PathOf(mDescriptor) : mTemporary;
}

void AtomicFile::Write(std::span<const std::byte> bytes) {
    if (!mDescriptor.Write(bytes)) throw FileError::OfWriting(errno);
}

void AtomicFile::Close() {
    if (!mDescriptor) return;
    // Its bytes are on their way to the disk when `Flush` asks for them.
    ::sync_file_range(mDescriptor.Get(), 0, 0, SYNC_FILE_RANGE_WRITE);
    TakeTemporaryName();
    if (!mDescriptor.Close()) throw FileError::OfWriting(errno);
}

void AtomicFile::Flush() {
    if (!mDescriptor) return FlushClosed(mTemporary);
    if (!mDescriptor.Sync() || (!mTemporary.empty() && !mDescriptor.Close()))
        throw FileError::OfWriting(errno);
}

void AtomicFile::FlushClosed(const fs::path& temporary) {
    FileDescriptor file(temporary, O_WRONLY);
    if (!file || !file.Sync() || !file.Close()) throw FileError::OfWriting(errno);
}

void AtomicFile::TakeTemporaryName() {
    if (!mTemporary.empty()) return;
    mTemporary = TemporaryNames::Get().Make(FolderOf(mPath),
                                            [this](const fs::path& file) { return Link(mDescriptor, file); });
    if (mTemporary.empty()) throw NotMade(mPath, errno);
}

void AtomicFile::TakeName() {
    if (!mTemporary.empty() || mReplaces || !Link(mDescriptor, mPath)) {
        TakeTemporaryName();
        if (::rename(mTemporary.c_str(), mPath.c_str()) != 0) throw NotMade(mPath, errno);
        TemporaryNames::Get().Forget(mTemporary);
        mTemporary.clear();
    }
    mDescriptor.Close();
}

// Makes a name given in it last: without this, a crash of the machine may bring the old one back. The file
// has its name by then and is whole, so that it is of no use to fail.
void AtomicFile::SyncFolder(const fs::path& path) {
    if (const FileDescriptor folder(FolderOf(path), O_RDONLY | O_DIRECTORY); folder) folder.Sync();
}

std::string AtomicFile::Commit() {
    Flush();
    TakeName();
    SyncFolder(mPath);
    return mLost;
}

} // namespace corvane
