#include "OutputFile.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

namespace corvane {
namespace {

constexpr std::uint64_t kWorthStarting = std::uint64_t{8} << 20;

// Fewer changes between writer and reader; does nothing for what is no pipe.
void EnlargePipe(int fd) {
    constexpr int kSize = 1 << 20;
    fcntl(fd, F_SETPIPE_SZ, kSize);
}

} // namespace

Failure WritingFailure(const std::string& name, const FileError& error) {
    return Failure(fmt::format("{}: {}; {}", name, error.what(), error.GetRemedy()));
}

template <class Step>
void OutputFile::Guarded(const Step& step) const {
    try {
        step();
    } catch (const FileError& error) {
        throw WritingFailure(mName, error);
    }
}

OutputFile::OutputFile(const std::filesystem::path& path) : mPath(path), mName(path.string()) {
    if (path == "-") mName = "standard output";
    struct stat status {};
    const bool exists = path == "-" || stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode))
        OpenAsIs();
    else
        Guarded([&] { mFile.emplace(path); });
}

void OutputFile::OpenAsIs() {
    if (mPath == "-")
        mAsIs = FileDescriptor(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    else {
        Guarded([this] { FollowLinks(mPath); }); // refuses those that another user planted
        mAsIs = FileDescriptor(mPath, O_WRONLY);
    }
    if (!mAsIs) Fail(errno);
    EnlargePipe(mAsIs.Get());
}

void OutputFile::Reserve(std::uint64_t bytes) {
    // Not every file system can.
    if (IsRegular() && fallocate(Fd(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(bytes)) != 0 &&
        (errno == ENOSPC || errno == EFBIG || errno == EDQUOT))
        Fail(errno);
}

void OutputFile::Write(std::span<const std::byte> bytes) {
    if (!Descriptor().Write(bytes)) Fail(errno);
    mWritten += bytes.size();
    // The disk works meanwhile, or `Commit` would wait for all of it.
    if (mWritten - mStarted < kWorthStarting || !IsRegular()) return;
    sync_file_range(Fd(), static_cast<off_t>(mStarted), static_cast<off_t>(mWritten - mStarted),
                    SYNC_FILE_RANGE_WRITE);
    mStarted = mWritten;
}

bool OutputFile::IsPipe() const {
    struct stat status {};
    return fstat(Fd(), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

void OutputFile::WriteAt(std::span<const std::byte> bytes, std::uint64_t offset) {
    if (!Descriptor().WriteAt(bytes, offset)) Fail(errno);
}

void OutputFile::MoveTo(AtomicSeries& series, std::int64_t number) {
    if (IsRegular())
        Guarded([&] { series.Add(number, std::move(*mFile)); });
    else if (!mAsIs.Close())
        Fail(errno);
}

std::string OutputFile::Commit() {
    std::string lost;
    struct stat status {};
    if (IsRegular() && fstat(Fd(), &status) == 0) mWritten = static_cast<std::uint64_t>(status.st_size);
    if (IsRegular())
        Guarded([&] { lost = mFile->Commit(); });
    else if (!mAsIs.Close())
        Fail(errno);
    return lost;
}

void OutputFile::Fail(int error) const {
    if (error == EPIPE)
        throw Failure(fmt::format("{}: the reader closed the pipe before the export's end", mName));
    if (error == EFBIG)
        throw Failure(fmt::format(
            "{}: the file would grow over the size limit; raise it or export fewer frames", mName));
    throw WritingFailure(mName, FileError::OfWriting(error));
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
