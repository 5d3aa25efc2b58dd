#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include <signal.h>

#include "Engine/Failure.h"

namespace corvane {

/// Closes a file descriptor when it goes, unless it is standard output.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) : mFd(fd) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : mFd(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;

    int Get() const { return mFd; }
    explicit operator bool() const { return mFd >= 0; }
    /// Closes; false where the system reports that earlier writes failed (errno tells why).
    bool Close();

  private:
    int Release();
    int mFd = -1;
};

/// A file in the making. A regular file is written under a temporary name in its own folder and takes its
/// place in one step with `Commit`; until then an older file of that name stays as it was, and without
/// `Commit` nothing is left. A symbolic link keeps pointing and its target is replaced; the mode of an
/// existing file is kept. A pipe, a device and standard output ("-") are written as they are.
///
/// Everything throws `Failure` with the file's name, the reason and the remedy.
class OutputFile {
  public:
    explicit OutputFile(const std::filesystem::path& path);
    ~OutputFile();
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&&) = delete;

    void Write(std::span<const std::byte> bytes);
    /// Writes at a place of its own, which does not move the file's position.
    void WriteAt(std::span<const std::byte> bytes, std::uint64_t offset);

    /// Closes the file but leaves it under its temporary name.
    void Close();
    /// Closes the file and puts it in its place.
    void Commit();

    int Fd() const { return mFd.Get(); }
    /// Whether it is a file on a disk, which can be read back and written out of order.
    bool IsRegular() const { return !mTemporary.empty(); }
    /// Where the bytes are until `Commit`; the path itself for what is no regular file.
    const std::filesystem::path& WorkingPath() const { return IsRegular() ? mTemporary : mPath; }
    /// What to call it in messages.
    const std::string& Name() const { return mName; }
    /// Bytes given to `Write` and `WriteAt`; after `Commit`, the size of the file.
    std::uint64_t BytesWritten() const { return mWritten; }

    /// Throws the `Failure` for `error` (an errno) met while writing.
    [[noreturn]] void Fail(int error) const;

  private:
    void OpenAsIs();
    void OpenTemporary();

    std::filesystem::path mPath; // symbolic links followed
    std::filesystem::path mTemporary;
    std::string mName;
    Descriptor mFd;
    std::uint64_t mWritten = 0;
};

/// While it lives, writing to a closed pipe or over a size limit is an error of the write and not a signal
/// that kills.
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
