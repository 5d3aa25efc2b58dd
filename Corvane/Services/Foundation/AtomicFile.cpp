#include "AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "NeverDestroyed.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// The temporary files that there are, for a process that ends in the middle of writing without the writer
/// being told, as when the display goes away: what `exit` runs removes them.
class Temporaries {
  public:
    static Temporaries& Get() {
        static NeverDestroyed<Temporaries> all;
        return all.Get();
    }

    Temporaries() {
        std::atexit([] {
            const std::lock_guard lock(Get().mMutex);
            Get().RemoveAll();
        });
        // That may come from a signal handler, in the middle of anything: they stay if the list is in use.
        std::at_quick_exit([] {
            if (Get().mMutex.try_lock()) Get().RemoveAll();
        });
    }

    /// Makes a file that was not there; none, with `errno` set, if it can't be made.
    FileDescriptor Make(const fs::path& file, mode_t mode) {
        {
            const std::lock_guard lock(mMutex);
            mFiles.emplace(file, ::getpid());
        }
        FileDescriptor descriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        const int error = errno;
        if (!descriptor) Forget(file);
        errno = error;
        return descriptor;
    }
    void Forget(const fs::path& file) {
        const std::lock_guard lock(mMutex);
        mFiles.erase(file);
    }

  private:
    void RemoveAll() const {
        // Not those of a process that this one was forked from.
        for (const auto& [file, process] : mFiles)
            if (process == ::getpid()) ::unlink(file.c_str());
    }

    std::mutex mMutex;
    std::map<fs::path, pid_t> mFiles; // with the process that made them
};

fs::path FolderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// A name that this process did not use before. Not made of the file's own, which may be as long as a name
/// can be.
std::string TemporaryName() {
    static std::atomic<std::uint64_t> count = 0;
    return fmt::format(".synthex-{}-{}", ::getpid(), ++count);
}

/// Why no file can be made in `folder`, or given its name there. `replaces` is whether there is one to
/// replace.
FileError NotMade(const fs::path& folder, bool replaces, int error) {
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
        if (replaces)
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

/// Makes a name given in it last: without this, a crash of the machine may bring the old one back.
void SyncFolder(const fs::path& folder) {
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor) ::fsync(descriptor.Get());
}

} // namespace

fs::path FollowLinks(fs::path path) {
    constexpr int kMostLinks = 40; // as the system has it
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, error)); ++links) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;
        if (links == kMostLinks)
            throw FileError(Mosk::kResult_NotFound, "its links lead in a circle", "choose another name");
        path = path.parent_path() / next; // an absolute one stands alone
    }
    return path;
}

// By the private constructor: the destructor then runs if this one throws.
AtomicFile::AtomicFile(const fs::path& path) : AtomicFile() {
    mPath = FollowLinks(path);
    struct stat status {};
    const bool exists = ::stat(mPath.c_str(), &status) == 0;
    if (exists) CheckTarget(mPath, status);
    const fs::path folder = FolderOf(mPath);
    do {
        fs::path temporary = folder / TemporaryName();
        // What replaces a file is nobody else's to read before it has that file's permissions.
        mDescriptor = Temporaries::Get().Make(temporary, exists ? 0600 : 0666);
        if (mDescriptor) mTemporary = std::move(temporary);
    } while (!mDescriptor && errno == EEXIST);
    if (!mDescriptor) throw NotMade(folder, exists, errno);
    if (exists && ::fchmod(mDescriptor.Get(), status.st_mode & 07777) != 0) throw FileError::OfWriting(errno);
}

AtomicFile::AtomicFile(AtomicFile&& other) noexcept
    : mPath(std::move(other.mPath)), mTemporary(std::exchange(other.mTemporary, {})),
      mDescriptor(std::move(other.mDescriptor)) {}

AtomicFile::~AtomicFile() {
    if (mTemporary.empty()) return;
    ::unlink(mTemporary.c_str());
    Temporaries::Get().Forget(mTemporary);
}

void AtomicFile::Write(std::span<const std::byte> bytes) {
    if (!mDescriptor.Write(bytes)) throw FileError::OfWriting(errno);
}

void AtomicFile::Close() {
    // Its bytes are on their way to the disk when `Flush` asks for them.
    if (mDescriptor) ::sync_file_range(mDescriptor.Get(), 0, 0, SYNC_FILE_RANGE_WRITE);
    if (!mDescriptor.Close()) throw FileError::OfWriting(errno);
}

void AtomicFile::Flush() {
    if (!mDescriptor) mDescriptor = FileDescriptor(::open(mTemporary.c_str(), O_WRONLY | O_CLOEXEC));
    // Not every file system can be asked (EINVAL).
    if (!mDescriptor || (::fsync(mDescriptor.Get()) != 0 && errno != EINVAL) || !mDescriptor.Close())
        throw FileError::OfWriting(errno);
}

void AtomicFile::TakeName() {
    if (::rename(mTemporary.c_str(), mPath.c_str()) != 0) throw NotMade(FolderOf(mPath), false, errno);
    Temporaries::Get().Forget(mTemporary);
    mTemporary.clear();
}

void AtomicFile::Commit() {
    AtomicFile* const files[] = {this};
    CommitAll(files);
}

void AtomicFile::CommitAll(std::span<AtomicFile* const> files) {
    std::set<fs::path> folders;
    for (AtomicFile* const file : files) {
        folders.insert(FolderOf(file->mPath));
        file->Flush();
    }
    for (AtomicFile* const file : files) file->TakeName();
    for (const fs::path& folder : folders) SyncFolder(folder);
}

} // namespace corvane
