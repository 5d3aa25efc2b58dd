#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "OutputFile.h"

namespace corvane {

/// Writes much data in order as fast as its destination takes it: a large file on a disk past the page cache,
/// with writes that overlap with what makes the data, all else plainly. Everything throws `Failure` as
/// `OutputFile` does. One thread at a time.
class StreamWriter {
  public:
    /// `total` is how many bytes will come; room for them is reserved, so that a full disk shows at once. 0
    /// if that is not known.
    StreamWriter(const std::filesystem::path& path, std::uint64_t total);
    ~StreamWriter();
    StreamWriter(const StreamWriter&) = delete;
    StreamWriter& operator=(const StreamWriter&) = delete;

    /// Takes over a copy of the bytes; an earlier write's failure may show only now.
    void Write(std::span<const std::byte> bytes);
    /// Writes what is left and puts the file in its place.
    void Finish();
    /// Whether writes wait for a reader.
    bool MayBlock() const { return mPipe; }
    /// Bytes given to `Write`.
    std::uint64_t BytesWritten() const { return mTotal; }

  private:
    class DirectQueue;

    OutputFile mFile;
    std::unique_ptr<DirectQueue> mDirect; // none if plain writes are best
    bool mPipe = false;
    std::uint64_t mTotal = 0;
};

} // namespace corvane
