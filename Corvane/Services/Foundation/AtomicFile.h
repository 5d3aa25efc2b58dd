#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include <sys/stat.h>

#include "FileDescriptor.h"
#include "FileError.h"

namespace corvane {

/// The file that a chain of symbolic links ends at, whether it exists or not; `path` itself if it is no link.
/// Throws `FileError` if the links lead in a circle, and if one is not the user's own although anybody may
/// put one there, as in /tmp: files could be replaced through it that its maker may not touch. Any thread.
std::filesystem::path FollowLinks(std::filesystem::path path);

/// What people are told of a file that was saved: "PATH: saved.", and what was lost by it, a clause, if it is
/// not empty. Any thread; fails only for want of memory.
std::string SavedText(const std::filesystem::path& path, const std::string& lost);

/// A file that replaces another one whole, or makes a new one: it has no name, or a temporary one in the
/// folder where it belongs, and takes its name in one step when it is complete and on the disk. Until then an
/// older file of that name stays as it was. Without `Commit` nothing is left, however the process ends; only
/// of what has a temporary name (after `Close`, and where there are no files without one) the next file that
/// is made in that folder removes what a killed process left.
///
/// Links are followed and keep pointing. The owner and the permissions of an older file are kept; a new file
/// gets those that the process gives to new files. One thread at a time.
class AtomicFile {
  public:
    /// Makes the file that will be at `path`, with the permissions `mode` if it is a new one. Throws
    /// `FileError`, and leaves everything as it was, if there is a folder, a pipe or a device, a file that
    /// may not be written, or if no file can be made in its folder. A file that may be written in a folder
    /// that may not is refused: written in place it could be left half done.
    explicit AtomicFile(const std::filesystem::path& path, mode_t mode = 0666);
    ~AtomicFile();
    AtomicFile(AtomicFile&& other) noexcept;
    AtomicFile& operator=(AtomicFile&&) = delete;

    /// Where this process finds the bytes until `Commit`.
    std::filesystem::path WorkingPath() const;
    /// The open file, at the end of what was written; none after `Close` and `Commit`.
    const FileDescriptor& Descriptor() const { return mDescriptor; }
    /// What `Commit` does not keep of the file that it replaces, as a clause; empty if it keeps all.
    const std::string& WhatIsLost() const { return mLost; }

    /// Writes on. Throws `FileError` if the system does not take all of `bytes`.
    void Write(std::span<const std::byte> bytes);
    /// Closes the file but leaves it under a temporary name. Throws `FileError` if the system reports that
    /// earlier writes failed.
    void Close();

    /// Brings what was written to the disk and gives the file its name. Throws `FileError` if either fails;
    /// the older file is as it was then. Returns `WhatIsLost`, which is to be told.
    [[nodiscard]] std::string Commit();

  private:
    friend class AtomicSeries;

    AtomicFile() = default;
    void Open(mode_t mode);
    void TakeOver(const struct stat& older);
    void Flush();
    // For the series: the file that waits under the temporary name of this number, its name, and what is done
    // to it.
    static AtomicFile Resume(const std::filesystem::path& path, std::uint64_t temporary);
    static std::filesystem::path TemporaryOf(const std::filesystem::path& path, std::uint64_t number);
    static void FlushClosed(const std::filesystem::path& temporary);
    static void SyncFolder(const std::filesystem::path& path);
    void TakeTemporaryName();
    void TakeName();

    std::filesystem::path mPath; // links followed
    bool mReplaces = false;      // whether there is a file at that path
    std::string mLost;
    std::filesystem::path mTemporary; // empty while the file has no name
    FileDescriptor mDescriptor;
};

} // namespace corvane
