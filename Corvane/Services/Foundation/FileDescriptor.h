#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <utility>

namespace corvane {

/// Owns a file descriptor of the system and closes it when it goes. Moved, never copied. One thread at a
/// time, except `WriteAt`.
class FileDescriptor {
  public:
    /// Owns nothing.
    FileDescriptor() = default;
    /// Takes over an open descriptor; a negative number is none, so that the answer of `open` can be handed
    /// in.
    explicit FileDescriptor(int number) : mNumber(number) {}
    /// Opens the file at `path` as the system's `open` does, not for child processes. Owns nothing, with
    /// `errno` set, if the system refuses.
    FileDescriptor(const std::filesystem::path& path, int flags, unsigned mode = 0);
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : mNumber(std::exchange(other.mNumber, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        Close();
        mNumber = std::exchange(other.mNumber, -1);
        return *this;
    }

    /// The number; negative where there is none.
    int Get() const { return mNumber; }
    explicit operator bool() const { return mNumber >= 0; }

    /// Reads until `bytes` is full or the file ends. Returns how many bytes came, or a negative number, with
    /// `errno` set, if the system can't read.
    std::int64_t Read(std::span<std::byte> bytes) const;
    /// Writes all of `bytes` at the file's position. False, with `errno` set, if the system does not take
    /// all.
    bool Write(std::span<const std::byte> bytes) const;
    /// Writes all of `bytes` at `offset` bytes from the start, and leaves the file's position as it is. Fails
    /// as `Write` does. Any thread.
    bool WriteAt(std::span<const std::byte> bytes, std::uint64_t offset) const;

    /// Brings what was written to the disk. False, with `errno` set, if that fails; true if the file lies
    /// where there is nothing to bring it to.
    bool Sync() const;
    /// Closes it. False, with `errno` set, if the system reports only now that earlier writes failed.
    bool Close();

  private:
    int mNumber = -1;
};

} // namespace corvane
