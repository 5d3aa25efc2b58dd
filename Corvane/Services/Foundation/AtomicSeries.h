#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "AtomicFile.h"

namespace corvane {

/// Files of one folder that take their names together, no sooner than all of them are on the disk. Until then
/// they have temporary names. However many they are, nothing is kept of each, unless its name is a link: what
/// else is to be known of a file follows from its number. Without `Commit` nothing is left, as `AtomicFile`
/// says. One thread at a time.
class AtomicSeries {
  public:
    /// `pathOf` tells the path of the file of a number, and always the same one.
    explicit AtomicSeries(std::function<std::filesystem::path(std::int64_t)> pathOf);
    ~AtomicSeries();
    AtomicSeries(const AtomicSeries&) = delete;
    AtomicSeries& operator=(const AtomicSeries&) = delete;

    /// Takes and closes a file that was made for the path of `number`, each number once. Least is kept if the
    /// numbers come one after the other. Throws `FileError` as `AtomicFile::Close` does; the file is gone
    /// then.
    void Add(std::int64_t number, AtomicFile file);
    /// Brings all files to the disk and gives them their names; quicker than one after the other. Throws
    /// `FileError` if something fails, which is then of the file of the number `Reached`. Some may have their
    /// names then.
    void Commit();
    /// Where this process finds the files until `Commit`, in the order of their numbers.
    std::vector<std::filesystem::path> WorkingPaths() const;
    /// The number of the file that `Commit` came to.
    std::int64_t Reached() const { return mReached; }
    /// What is not kept of files that are replaced, as a clause, or nothing. Names the first such file, if
    /// there are several files.
    std::string WhatIsLost() const;

  private:
    // Files with numbers one after the other whose temporary names have such numbers, too.
    struct Run {
        std::int64_t number;
        std::uint64_t temporary;
        std::int64_t count;
    };
    // What of older files is lost.
    struct Loss {
        std::int64_t number = 0;
        std::string clause; // of the first that loses something
        std::int64_t files = 0;
    };

    AtomicFile TakeFirst(Run& run) const;
    void Flush();

    const std::function<std::filesystem::path(std::int64_t)> mPathOf;
    std::vector<Run> mRuns;
    std::map<std::int64_t, AtomicFile> mLinked;
    std::int64_t mCount = 0;
    std::int64_t mReached = 0;
    Loss mLoss;
};

} // namespace corvane
