#include "OutputFile.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

namespace corvane {
namespace {

namespace fs = std::filesystem;

std::string Reason(int error) {
    return std::generic_category().message(error);
}

fs::path FolderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// The file that a chain of symbolic links ends at, whether it exists or not.
fs::path FollowLinks(fs::path path) {
    std::error_code ignored;
    for (int links = 0; links < 40 && fs::is_symlink(fs::symlink_status(path, ignored)); ++links) {
        const fs::path next = fs::read_symlink(path, ignored);
        if (ignored) break;
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return path;
}

[[noreturn]] void FailToMake(const std::string& name, const fs::path& folder, int error) {
    switch (error) {
    case ENOENT:
        throw Failure(fmt::format("{}: the folder {} does not exist; make it first", name, folder.string()));
    case ENOTDIR:
        throw Failure(fmt::format("{}: {} is no folder; choose another place", name, folder.string()));
    case EACCES:
    case EPERM:
    case EROFS:
        throw Failure(fmt::format("{}: the folder {} may not be written to; choose another place", name,
                                  folder.string()));
    case ENOSPC:
    case EDQUOT:
        throw Failure(fmt::format("{}: the disk is full; free some space or choose another place", name));
    default: throw Failure(fmt::format("{} can't be made: {}; choose another place", name, Reason(error)));
    }
}

// Fewer changes between writer and reader; does nothing for what is no pipe.
void EnlargePipe(int fd) {
    constexpr int kSize = 1 << 20;
    fcntl(fd, F_SETPIPE_SZ, kSize);
}

mode_t ModeForNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// The temporary files that there are, for the end of a process that comes in the middle of an export without
/// the export being told, as when the display goes away: what `exit` runs removes them.
class Temporaries {
  public:
    static Temporaries& Get() {
        // Never destroyed: threads may still come here while the process ends.
        alignas(Temporaries) static std::byte place[sizeof(Temporaries)];
        static Temporaries* const only = std::construct_at(reinterpret_cast<Temporaries*>(place));
        return *only;
    }

    void Add(const fs::path& file) {
        const std::lock_guard lock(mMutex);
        mFiles.emplace(file, getpid());
    }
    void Remove(const fs::path& file) {
        const std::lock_guard lock(mMutex);
        mFiles.erase(file);
    }

    Temporaries() {
        std::atexit([] {
            Temporaries& all = Get();
            const std::lock_guard lock(all.mMutex);
            // Not those of a process that this one was forked from.
            for (const auto& [file, process] : all.mFiles)
                if (process == getpid()) unlink(file.c_str());
        });
    }

  private:
    std::mutex mMutex;
    std::map<fs::path, pid_t> mFiles; // with the process that made them
};

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    Close();
    mFd = other.Release();
    return *this;
}

int Descriptor::Release() {
    return std::exchange(mFd, -1);
}

bool Descriptor::Close() {
    const int fd = Release();
    return fd < 0 || fd == STDOUT_FILENO || close(fd) == 0;
}

OutputFile::OutputFile(const fs::path& path) : mPath(path), mName(path.string()) {
    if (path == "-") {
        mName = "standard output";
        mFd = Descriptor(STDOUT_FILENO);
        EnlargePipe(mFd.Get());
        return;
    }
    mPath = FollowLinks(path);
    struct stat status {};
    const bool exists = stat(mPath.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode))
        throw Failure(fmt::format("{} is a folder; name a file in it", mName));
    if (exists && !S_ISREG(status.st_mode))
        OpenAsIs();
    else if (exists && access(mPath.c_str(), W_OK) != 0)
        throw Failure(fmt::format("{} is read-only; allow writing to it or choose another name", mName));
    else {
        OpenTemporary();
        fchmod(mFd.Get(), exists ? status.st_mode & 07777 : ModeForNewFiles());
    }
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : mPath(std::move(other.mPath)), mTemporary(std::exchange(other.mTemporary, {})),
      mName(std::move(other.mName)), mFd(std::move(other.mFd)), mWritten(other.mWritten) {}

OutputFile::~OutputFile() {
    if (!IsRegular()) return;
    unlink(mTemporary.c_str());
    Temporaries::Get().Remove(mTemporary);
}

void OutputFile::OpenAsIs() {
    mFd = Descriptor(open(mPath.c_str(), O_WRONLY | O_CLOEXEC));
    if (!mFd)
        throw Failure(fmt::format("{} can't be written: {}; choose another place", mName, Reason(errno)));
    EnlargePipe(mFd.Get());
}

void OutputFile::OpenTemporary() {
    const fs::path folder = FolderOf(mPath);
    // Not made of the file's own name, which may be as long as a name can be.
    std::string name = (folder / ".synthex-XXXXXX").string();
    mFd = Descriptor(mkostemp(name.data(), O_CLOEXEC));
    if (!mFd) FailToMake(mName, folder, errno);
    mTemporary = name;
    Temporaries::Get().Add(mTemporary);
}

void OutputFile::Write(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(mFd.Get(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) Fail(errno);
        if (written < 0) continue;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        mWritten += static_cast<std::uint64_t>(written);
    }
}

void OutputFile::WriteAt(std::span<const std::byte> bytes, std::uint64_t offset) {
    while (!bytes.empty()) {
        const ssize_t written = pwrite(mFd.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno != EINTR) Fail(errno);
        if (written < 0) continue;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        offset += static_cast<std::uint64_t>(written);
        mWritten += static_cast<std::uint64_t>(written);
    }
}

void OutputFile::Close() {
    if (!mFd.Close()) Fail(errno);
}

void OutputFile::Commit() {
    struct stat status {};
    if (IsRegular() && fstat(mFd.Get(), &status) == 0) mWritten = static_cast<std::uint64_t>(status.st_size);
    Close();
    if (!IsRegular()) return;
    if (rename(mTemporary.c_str(), mPath.c_str()) != 0) FailToMake(mName, FolderOf(mPath), errno);
    Temporaries::Get().Remove(mTemporary);
    mTemporary.clear();
}

void OutputFile::Fail(int error) const {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        throw Failure(fmt::format("{}: the disk is full; free some space or choose another place", mName));
    case EFBIG:
        throw Failure(fmt::format(
            "{}: the file would grow over the size limit; raise it or export fewer frames", mName));
    case EPIPE: throw Failure(fmt::format("{}: the reader closed the pipe before the export's end", mName));
    default:
        throw Failure(fmt::format("{} can't be written: {}; choose another place", mName, Reason(error)));
    }
}

WriteSignalGuard::WriteSignalGuard() {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &mPipe);
    sigaction(SIGXFSZ, &ignore, &mSize);
}

WriteSignalGuard::~WriteSignalGuard() {
    sigaction(SIGPIPE, &mPipe, nullptr);
    sigaction(SIGXFSZ, &mSize, nullptr);
}

} // namespace corvane
