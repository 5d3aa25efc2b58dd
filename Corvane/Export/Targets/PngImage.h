#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "Export/Picture/PackedReader.h"
#include "Export/Picture/StreamFacts.h"

namespace corvane {

/// Zero bytes as deflate blocks that begin and end at a byte and refer to nothing before them. One thread at
/// a time.
class ZeroBlocks {
  public:
    /// The blocks for `count` zeros, made on first use. They stay valid as long as this object. Throws
    /// `std::bad_alloc`.
    std::span<const std::byte> For(std::size_t count);

  private:
    std::map<std::size_t, std::vector<std::byte>> mBlocks;
};

/// Makes a zlib stream out of rows of PNG's filtered bytes, each either one color or anything. A row of one
/// color costs a few copied bytes: zlib alone, or libpng, takes 5 to 8 times as long for such frames, and 2
/// to 3 times as long if their components are floats. One thread at a time; all functions throw
/// `std::bad_alloc`.
class PngDeflate {
  public:
    PngDeflate();
    ~PngDeflate();
    PngDeflate(const PngDeflate&) = delete;
    PngDeflate& operator=(const PngDeflate&) = delete;

    /// Starts a new stream and drops the one before it.
    void Begin();
    /// A row of up to 255 bytes of `start` and then `zeros` zero bytes.
    void AddStartAndZeros(std::span<const std::byte> start, std::size_t zeros);
    /// A row of any bytes.
    void Add(std::span<const std::byte> bytes);
    /// Ends the stream and returns it; valid until the next `Begin`.
    std::span<const std::byte> End();

  private:
    struct Stream;
    void Deflate(std::span<const std::byte> bytes, int flush);
    void Append(std::span<const std::byte> bytes);

    std::unique_ptr<Stream> mStream;
    ZeroBlocks mZeros;
    std::vector<std::byte> mOut;
    std::size_t mSize = 0;
    unsigned long mChecksum = 1;
    bool mOpen = false; // bytes went through zlib since the last flush
};

/// Encodes frames as PNG images in memory: 8 bits for 8-bit formats and 16 for float ones, with alpha if
/// the format has alpha that is meant. The pixel aspect is in pHYs. There is no gAMA, cHRM or sRGB chunk: the
/// values are the clip's own, and such a chunk would have viewers change them. One thread at a time.
class PngImage {
  public:
    /// For frames of the size and format that `facts` tells. Throws `std::bad_alloc`.
    explicit PngImage(const StreamFacts& facts);

    /// The image; valid until the next call. Throws `Failure` if it is too large for a PNG or can't be
    /// converted, and `std::bad_alloc`.
    std::span<const std::byte> Encode(const FrameView& frame);
    /// The pixels that decoders of the image get, rows without gaps. Throws `std::bad_alloc`.
    void ReadPixels(const FrameView& frame, std::vector<std::byte>& pixels);

  private:
    std::span<const std::byte> Compress(const FrameView& frame);

    const StreamFacts mFacts;
    const PackedFormat mFormat;
    PackedReader mReader;
    PngDeflate mDeflate;
    std::vector<std::byte> mRow;
    std::vector<std::byte> mFile;
};

} // namespace corvane
