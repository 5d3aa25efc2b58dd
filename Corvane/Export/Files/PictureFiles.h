#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "OutputFile.h"
#include "OutputSeries.h"

namespace corvane {

/// Where pictures go: one file, or with a number in the name one file a picture. Those of a series take their
/// places together at the end, so that it is whole or not there. Throws `Failure`, naming the file, if one
/// can't be written. One thread at a time.
class PictureFiles {
  public:
    explicit PictureFiles(const std::filesystem::path& path);

    /// Whether there is one file a picture.
    bool IsSeries() const { return mSeries.has_value(); }
    /// Makes the file of the picture of frame `index`, and all that is in it.
    void Write(std::int64_t index, std::span<const std::byte> bytes);
    /// Where this process finds the files until `Commit`, in the frames' order.
    std::vector<std::filesystem::path> WorkingPaths() const;
    /// Puts all files in their places. Returns what could not be kept of older ones, as a clause, or nothing.
    [[nodiscard]] std::string Commit();
    /// Bytes of all pictures.
    std::uint64_t BytesWritten() const { return mWritten; }

  private:
    const std::filesystem::path mPath;
    std::optional<OutputFile> mFile;
    std::optional<OutputSeries> mSeries; // if the name has a number
    std::uint64_t mWritten = 0;
};

} // namespace corvane
