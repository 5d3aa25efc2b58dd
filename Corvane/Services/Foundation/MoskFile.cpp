#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FileJournal.h"
#include "Mosk.h"

namespace Mosk {

namespace {

Result ResultOfErrno(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return kResult_NotFound;
    case EACCES:
    case EPERM:
    case EROFS: return kResult_AccessDenied;
    case EISDIR: return kResult_NotAFile;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return kResult_DiskFull;
    default: return kResult_Failed;
    }
}

/// The path as the system takes it; empty where it is no valid text.
std::string SystemPath(const String& path) {
    try {
        return ToUTF8(path);
    } catch (const std::invalid_argument&) {
        return {};
    }
}

/// Follows symbolic links to where the text is to go, the last link pointing to nothing included.
std::string ResolveTarget(const std::string& path) {
    std::string target = path;
    for (int links = 0; links < 40; ++links) {
        char link[PATH_MAX];
        const ssize_t length = ::readlink(target.c_str(), link, sizeof link);
        if (length < 0) return target;
        const std::string next(link, static_cast<std::size_t>(length));
        target = next.starts_with('/') ? next : target.substr(0, target.rfind('/') + 1) + next;
    }
    return {};
}

bool WriteWhole(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

/// Makes a rename durable: without it a crash of the machine may bring the old name back.
void SyncFolderOf(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

} // namespace

File::~File() {
    Close();
}

Result File::Open(const String& path, FileAccessFlags) {
    Close();
    // Not blocking: opening a FIFO would wait for a writer.
    const int descriptor = ::open(SystemPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) return ResultOfErrno(errno);
    struct stat status {};
    Result result = kResult_OK;
    if (::fstat(descriptor, &status) != 0)
        result = kResult_Failed;
    else if (!S_ISREG(status.st_mode))
        result = kResult_NotAFile;
    else if (static_cast<std::uint64_t>(status.st_size) > kSizeLimit)
        result = kResult_TooLarge;
    if (result < 0)
        ::close(descriptor);
    else
        mDescriptor = descriptor;
    return result;
}

Result File::Create(const String& path, FileAccessFlags, FileShareModeFlags,
                    FileCreateDispositionFlags disposition, FileAttributesFlags, bool) {
    Close();
    const std::string target = ResolveTarget(SystemPath(path));
    if (target.empty()) return kResult_NotFound;
    corvane::FileJournal::Note(path, target);

    struct stat status {};
    const bool exists = ::stat(target.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) return kResult_NotAFile;
    if (exists && disposition == FileCreateDispositionFlags::kFailIfExists) return kResult_Failed;
    if (exists && ::access(target.c_str(), W_OK) != 0) return kResult_AccessDenied;

    std::string temporary = target + ".XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) return ResultOfErrno(errno);
    // mkostemp makes files for their owner alone; a new file gets what the process makes by default.
    mode_t mode = status.st_mode & 07777;
    if (!exists) {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }
    if (::fchmod(descriptor, mode) != 0) {
        const Result result = ResultOfErrno(errno);
        ::close(descriptor);
        ::unlink(temporary.c_str());
        return result;
    }
    mDescriptor = descriptor;
    mTarget = target;
    mTemporary = temporary;
    return kResult_OK;
}

std::uint64_t File::SizeOnDisk() const {
    struct stat status {};
    return mDescriptor >= 0 && ::fstat(mDescriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size)
                                                                  : 0;
}

Result File::Read(void* buffer, std::uint32_t size, std::uint32_t& bytesRead) {
    bytesRead = 0;
    while (bytesRead < size) {
        const ssize_t count = ::read(mDescriptor, static_cast<char*>(buffer) + bytesRead, size - bytesRead);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return ResultOfErrno(errno);
        if (count == 0) break;
        bytesRead += static_cast<std::uint32_t>(count);
    }
    return kResult_OK;
}

Result File::Write(const void* bytes, std::uint32_t size, std::uint32_t& bytesWritten) {
    bytesWritten = 0;
    if (mTemporary.empty()) return kResult_Failed;
    if (!WriteWhole(mDescriptor, static_cast<const char*>(bytes), size) || ::fsync(mDescriptor) != 0 ||
        ::rename(mTemporary.c_str(), mTarget.c_str()) != 0) {
        const Result result = ResultOfErrno(errno);
        Close();
        return result;
    }
    mTemporary.clear();
    SyncFolderOf(mTarget);
    bytesWritten = size;
    return kResult_OK;
}

void File::Close() noexcept {
    if (mDescriptor >= 0) ::close(std::exchange(mDescriptor, -1));
    if (!mTemporary.empty()) ::unlink(mTemporary.c_str());
    mTemporary.clear();
    mTarget.clear();
}

bool PathUtils::ExistsOnDisk(const String& path) {
    struct stat status {};
    return ::stat(SystemPath(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

String PathUtils::GetFilePart(const String& path) {
    return path.substr(path.rfind(u'/') + 1);
}

} // namespace Mosk
