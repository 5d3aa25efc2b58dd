#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "NumberedName.h"
#include "Services/Foundation/AtomicSeries.h"

namespace corvane {

/// The files of an export that makes one for each frame. They are as `OutputFile` says, but take their names
/// together: a series is whole or not there. Memory doesn't grow with their number. Everything throws
/// `Failure` with a file's name, the reason and the remedy. One thread at a time.
class OutputSeries {
  public:
    /// Makes no file yet.
    explicit OutputSeries(NumberedName names);

    /// Makes the file of `number`, each once, and all that is in it.
    void Write(std::int64_t number, std::span<const std::byte> bytes);
    /// Where this process finds the files that were made, in the order of their numbers, until `Commit`.
    std::vector<std::filesystem::path> WorkingPaths() const;
    /// Puts all files in their places, on the disk. Returns what could not be kept of older files, as a
    /// clause that names the first of them, or nothing.
    [[nodiscard]] std::string Commit();

  private:
    const NumberedName mNames;
    AtomicSeries mFiles;
};

} // namespace corvane
