#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "FileDescriptor.h"
#include "FileError.h"

namespace corvane {

/// A regular file that is open for reading. Opening one never waits: a pipe or a device is refused at once.
/// One thread at a time.
class RegularFile {
  public:
    /// Opens the file at `path`, following links. Throws `FileError` if there is none, if it is a folder, a
    /// pipe or a device, if it has more than `limit` bytes, or if it may not be read.
    RegularFile(const std::filesystem::path& path, std::uint64_t limit);

    /// Its size in bytes when it was opened.
    std::uint64_t Size() const { return mSize; }
    /// Reads on until `bytes` is full or the file ends, and returns how many bytes came. Throws `FileError`
    /// if the system can't read.
    std::size_t Read(std::span<std::byte> bytes);
    /// Goes on reading at `offset` bytes from the start; beyond the end nothing comes.
    void Seek(std::uint64_t offset);

  private:
    FileDescriptor mDescriptor;
    std::uint64_t mSize = 0;
};

/// The bytes of the regular file at `path`; fewer than its size if it is cut meanwhile. Throws `FileError` as
/// `RegularFile` does. Any thread.
std::string ReadWholeFile(const std::filesystem::path& path, std::uint64_t limit);

} // namespace corvane
