#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include <signal.h>

#include "Engine/Failure.h"
#include "Services/Foundation/AtomicFile.h"
#include "Services/Foundation/AtomicSeries.h"

namespace corvane {

/// What people are told of `error`, met while the file that they know as `name` was written. Any thread.
Failure WritingFailure(const std::string& name, const FileError& error);

/// A file that an export makes. A regular file is replaced whole, as `AtomicFile` says: it takes its name
/// with `Commit`, and without `Commit` nothing is left. A pipe, a device and standard output ("-") are
/// written as they are.
///
/// Everything throws `Failure` with the file's name, the reason and the remedy. One thread at a time, except
/// `WriteAt`.
class OutputFile {
  public:
    /// Opens what is at `path`, or makes the file. Throws if it is a folder, is read-only or can't be made.
    explicit OutputFile(const std::filesystem::path& path);

    /// Reserves room for `bytes` in a regular file, so that a full disk shows at once. Throws if there is
    /// none.
    void Reserve(std::uint64_t bytes);
    /// Writes on. A large file is on its way to the disk while the rest is made. Throws if the disk is full,
    /// a size limit is reached or the reader of a pipe is gone.
    void Write(std::span<const std::byte> bytes);
    /// Writes at `offset` bytes from the start, which does not move the file's position. Throws as `Write`
    /// does. Any thread.
    void WriteAt(std::span<const std::byte> bytes, std::uint64_t offset);

    /// Closes the file and hands it to a series, in which it is the one of `number`. What is no regular file
    /// is only closed.
    void MoveTo(AtomicSeries& series, std::int64_t number);
    /// Closes the file and puts it in its place, on the disk. Returns what could not be kept of an older
    /// file, as a clause, or nothing.
    [[nodiscard]] std::string Commit();

    /// The descriptor's number; negative after `MoveTo` and `Commit`.
    int Fd() const { return Descriptor().Get(); }
    /// Whether it is a file on a disk, which can be read back and written out of order.
    bool IsRegular() const { return mFile.has_value(); }
    /// Whether writes wait for a reader.
    bool IsPipe() const;
    /// Where this process finds the bytes until `Commit`; the path itself for what is no regular file.
    std::filesystem::path WorkingPath() const { return IsRegular() ? mFile->WorkingPath() : mPath; }
    /// What to call it in messages.
    const std::string& Name() const { return mName; }
    /// Bytes given to `Write`; after `Commit`, the size of a regular file.
    std::uint64_t BytesWritten() const { return mWritten; }

    /// Throws the `Failure` for `error` (an errno) met while writing.
    [[noreturn]] void Fail(int error) const;

  private:
    const FileDescriptor& Descriptor() const { return IsRegular() ? mFile->Descriptor() : mAsIs; }
    void OpenAsIs();
    template <class Step>
    void Guarded(const Step& step) const;

    std::filesystem::path mPath;
    std::string mName;
    std::optional<AtomicFile> mFile;
    FileDescriptor mAsIs; // of what is no regular file
    std::uint64_t mWritten = 0;
    std::uint64_t mStarted = 0; // so many of them are on their way to the disk
};

/// While it lives, writing to a closed pipe or over a size limit is an error of the write and not a signal
/// that kills. Sets the process's handlers and puts the earlier ones back: one at a time in a process.
class WriteSignalGuard {
  public:
    WriteSignalGuard();
    ~WriteSignalGuard();
    WriteSignalGuard(const WriteSignalGuard&) = delete;
    WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

  private:
    struct sigaction mPipe;
    struct sigaction mSize;
};

} // namespace corvane
