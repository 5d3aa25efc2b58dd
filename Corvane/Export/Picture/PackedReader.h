#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "PictureConverter.h"

namespace corvane {

/// What pixels in one piece look like: components of 8 or 16 bits, R'G'B' full range.
struct PackedFormat {
    /// Which component each part of a pixel is: 0 R, 1 G, 2 B, 3 A.
    int order[4] = {0, 1, 2, 3};
    int components = 4; ///< 3 or 4
    int bits = 8;       ///< of a component: 8 or 16
    bool bigEndian = false;

    /// Bytes of one pixel.
    std::size_t PixelBytes() const { return static_cast<std::size_t>(components * bits / 8); }
};

/// Reads delivered frames as packed R'G'B'(A) pixels with straight alpha; opaque if the clip has no alpha.
/// 8-bit R'G'B' keeps its very bytes. Of a frame in another format, each distinct pixel that is beside a box
/// of `FindBox` is converted once a row, and rows of the box that repeat the one above once. One thread at a
/// time.
class PackedReader {
  public:
    /// For frames of the format that `facts` tells, of any size. Throws `std::bad_alloc`.
    PackedReader(const StreamFacts& facts, const PackedFormat& format);

    /// Starts a frame, which must stay until the last `Read`. Throws `Failure` if zimg can't convert it, and
    /// `std::bad_alloc`.
    void Begin(const FrameView& frame);
    /// The same for those who know the box that `FindBox` finds in the frame.
    void Begin(const FrameView& frame, const Box& box);
    /// Whether all pixels of a row of the frame are alike as delivered.
    bool RowIsUniform(std::uint32_t y) const;
    /// Writes the first `count` pixels of row `y` to `out`, without gaps.
    void Read(std::uint32_t y, std::uint32_t count, std::byte* out);

  private:
    bool IsInBox(std::uint32_t y) const { return y >= mBox.top && y < mBox.bottom; }
    template <std::size_t PixelBytes>
    void AddFrame();
    template <std::size_t PixelBytes>
    void Add(const std::byte* pixels, std::uint32_t count);
    void ConvertPending();

    const StreamFacts mFacts;
    const PackedFormat mFormat;
    FrameView mFrame;
    std::optional<PictureConverter> mConverter; // none if the bytes need a new order only
    Box mBox;
    std::vector<std::byte> mPending; // pixels that wait until they are enough for a conversion
    std::size_t mPendingPixels = 0;
    PlaneBuffer mPlanes;            // of one conversion
    std::vector<std::byte> mPacked; // what is converted
    std::size_t mPackedPixels = 0;
    // Which packed pixel one of the frame is: the first of each row, then those of the box, row by row.
    std::vector<std::uint32_t> mIndex;
    std::vector<std::size_t> mBoxRow; // where the pixels of each row of the box begin there
};

} // namespace corvane
