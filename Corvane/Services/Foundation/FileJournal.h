#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Mosk.h"

namespace corvane {

/// Keeps account of the files that plug-ins write (`Mosk::File::Write`) on its thread while it lives, so that
/// the host knows what a request did on disk. One journal a thread at a time.
class FileJournal {
  public:
    /// A file that was written, or could not be.
    struct Entry {
        Mosk::String path;                 ///< as the plug-in named it last
        std::filesystem::path target;      ///< with links followed
        bool existed = false;              ///< before it was first written
        std::optional<std::string> before; ///< its text before that; nothing if it could not be read
        std::string text;                  ///< what was written last, or was to be
        std::string whyNot;                ///< why the file does not hold that, as a clause; empty if it does
        bool changed = false;              ///< whether it was ever written
        std::string lost;                  ///< what writing it did not keep, as a clause
    };

    /// Begins the account of the calling thread.
    FileJournal();
    /// Ends it, on the same thread.
    ~FileJournal();
    FileJournal(const FileJournal&) = delete;
    FileJournal& operator=(const FileJournal&) = delete;

    /// The journal of the calling thread; null if there is none.
    static FileJournal* Current();

    /// The files, those written last at the end.
    const std::vector<Entry>& Entries() const { return mEntries; }
    /// What of the disk is another than before, as a clause: "nothing was changed", or the files that were
    /// saved.
    std::string WhatChanged() const;
    /// What people are to be told of files that were saved, but of which something was lost: a sentence, or
    /// one after the other; empty if there are none.
    std::string WhatWasLost() const;
    /// Puts the files back to what they were before each was first written, and removes those that did not
    /// exist. For a request that turns out to be wrong half way. What can't be put back stays as it is.
    void Undo();

    /// For `Mosk::File`: `text` is about to be written to the file that was named `path`. The caller enters
    /// how that ended. The entry lives until the next call.
    Entry& Begin(const Mosk::String& path, const std::filesystem::path& target, std::string text);

  private:
    std::vector<Entry> mEntries;
};

} // namespace corvane
