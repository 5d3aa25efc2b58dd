#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Mosk.h"

namespace corvane {

/// Keeps account of the files that plug-ins create or replace (`Mosk::File::Create`) on its thread while it
/// lives, so that the host knows what a request did on disk. One journal a thread at a time.
class FileJournal {
  public:
    /// Begins the account of the calling thread.
    FileJournal();
    /// Ends it, on the same thread.
    ~FileJournal();
    FileJournal(const FileJournal&) = delete;
    FileJournal& operator=(const FileJournal&) = delete;

    /// The paths as they were named, in the order of the attempts; those whose writing failed are among them.
    const std::vector<Mosk::String>& Paths() const { return mPaths; }
    /// Puts the files back to what they were when each was first named, and removes those that did not exist.
    /// For a request that turns out to be wrong half way. What can't be put back stays as it is.
    void Undo();

    /// For `Mosk::File`: `path` is about to be created or replaced, and `target` is where its text goes.
    static void Note(const Mosk::String& path, const std::filesystem::path& target);

  private:
    struct Before {
        std::filesystem::path target;
        bool existed;
        std::optional<std::string> text; ///< nothing if it could not be read
    };

    std::vector<Mosk::String> mPaths;
    std::vector<Before> mBefore;
};

} // namespace corvane
