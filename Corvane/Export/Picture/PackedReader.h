#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

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
/// 8-bit R'G'B' keeps its very bytes. One thread at a time.
class PackedReader {
  public:
    /// For frames of the size and format that `facts` tells. Throws `std::bad_alloc`.
    PackedReader(const StreamFacts& facts, const PackedFormat& format);

    /// Starts a frame, which must stay until the last `Read`. Throws `Failure` if zimg can't convert it, and
    /// `std::bad_alloc`.
    void Begin(const FrameView& frame);
    /// Whether all pixels of a row of the frame are alike as delivered.
    bool RowIsUniform(std::uint32_t y) const { return corvane::RowIsUniform(mFrame, y); }
    /// Writes the first `count` pixels of row `y` to `out`, without gaps.
    void Read(std::uint32_t y, std::uint32_t count, std::byte* out);

  private:
    const StreamFacts mFacts;
    const PackedFormat mFormat;
    FrameView mFrame;
    std::optional<PictureConverter> mConverter; // none if the bytes need a new order only
    PlaneBuffer mPlanes;
    PaintedRows mPainted;
};

} // namespace corvane
