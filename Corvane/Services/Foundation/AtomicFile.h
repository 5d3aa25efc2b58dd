#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

#include "FileDescriptor.h"
#include "FileError.h"

namespace corvane {

/// The file that a chain of symbolic links ends at, whether it exists or not; `path` itself if it is no link.
/// Throws `FileError` if the links lead in a circle. Any thread.
std::filesystem::path FollowLinks(std::filesystem::path path);

/// A file that replaces another one whole, or makes a new one: it is written under a temporary name in the
/// folder where it belongs, and takes its name in one step when it is complete and on the disk. Until then an
/// older file of that name stays as it was. Without `Commit` nothing is left, and nothing either if the
/// process ends by `exit` in between.
///
/// Links are followed and keep pointing. The permissions of an older file are kept; a new file gets those
/// that the process gives to new files. One thread at a time.
class AtomicFile {
  public:
    /// Makes the temporary file for the one at `path`. Throws `FileError`, and leaves everything as it was,
    /// if that is a folder, a pipe or a device, if it is a file that may not be written, or if no file can be
    /// made in its folder. A file that may be written in a folder that may not is refused: written in place
    /// it could be left half done.
    explicit AtomicFile(const std::filesystem::path& path);
    ~AtomicFile();
    AtomicFile(AtomicFile&& other) noexcept;
    AtomicFile& operator=(AtomicFile&&) = delete;

    /// Where the bytes are until `Commit`; empty afterwards.
    const std::filesystem::path& TemporaryPath() const { return mTemporary; }
    /// The open file, at the end of what was written; none after `Close` and `Commit`.
    const FileDescriptor& Descriptor() const { return mDescriptor; }

    /// Writes on. Throws `FileError` if the system does not take all of `bytes`.
    void Write(std::span<const std::byte> bytes);
    /// Closes the file but leaves it under its temporary name, so that many can be made before the first gets
    /// its name. Throws `FileError` if the system reports that earlier writes failed.
    void Close();

    /// Brings what was written to the disk and gives the file its name. Throws `FileError` if either fails;
    /// the older file is as it was then.
    void Commit();
    /// The same for several files, no sooner than all of them are on the disk; quicker than one after the
    /// other. If it throws, some may have their names.
    static void CommitAll(std::span<AtomicFile* const> files);

  private:
    AtomicFile() = default;
    void Flush();
    void TakeName();

    std::filesystem::path mPath; // links followed
    std::filesystem::path mTemporary;
    FileDescriptor mDescriptor;
};

} // namespace corvane
