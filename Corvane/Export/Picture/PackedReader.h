#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "PictureConverter.h"

namespace corvane {

/// Pixels in one piece: components of 8 or 16 bits, R'G'B' full range.
struct PackedFormat {
    /// Which component each part of a pixel is: 0 R, 1 G, 2 B, 3 A.
    int order[4] = {0, 1, 2, 3};
    int components = 4;
    int bits = 8;
    bool bigEndian = false;

    std::size_t PixelBytes() const { return static_cast<std::size_t>(components * bits / 8); }
};

/// Reads delivered frames as packed R'G'B'(A) pixels with straight alpha; opaque where the clip has no alpha.
/// 8-bit R'G'B' keeps its very bytes. One thread at a time.
class PackedReader {
  public:
    PackedReader(const StreamFacts& facts, const PackedFormat& format);

    /// Starts a frame, which must stay until the last `Read`.
    void Begin(const FrameView& frame);
    /// Whether all pixels of a row of the frame are alike as delivered.
    bool RowIsUniform(std::uint32_t y) const { return corvane::RowIsUniform(mFrame, y); }
    /// Writes the first `count` pixels of row `y`.
    void Read(std::uint32_t y, std::uint32_t count, std::byte* out);

  private:
    const StreamFacts mFacts;
    const PackedFormat mFormat;
    FrameView mFrame;
    std::optional<PictureConverter> mConverter; // none where the bytes need a new order only
    PlaneBuffer mPlanes;
};

} // namespace corvane
