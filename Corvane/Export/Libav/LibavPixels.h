#pragma once

#include <memory>
#include <optional>
#include <variant>

extern "C" {
#include <libavutil/pixfmt.h>
}

#include "Export/Picture/PackedReader.h"
#include "Export/Picture/PictureConverter.h"

struct AVFrame;

namespace corvane {

/// How a pixel format of libav is filled from delivered frames.
using PixelLayout = std::variant<PlanarFormat, PackedFormat>;

/// The layout of `format`; empty for those that can't be filled (gray, paletted, hardware, other byte order).
std::optional<PixelLayout> LayoutOf(AVPixelFormat format, const StreamFacts& facts);

/// Whether pictures of `format` have alpha.
bool HasAlpha(AVPixelFormat format);

/// The best of `supported` (ends with AV_PIX_FMT_NONE; null is "any") for these frames: for a lossless codec
/// the one that keeps every bit of them, else the one that most players take. AV_PIX_FMT_NONE where none can
/// be filled.
AVPixelFormat ChoosePixels(const AVPixelFormat* supported, bool lossless, const StreamFacts& facts);

/// Fills pictures of libav. One thread at a time.
class LibavPainter {
  public:
    LibavPainter(const PixelLayout& layout, const StreamFacts& facts);
    /// `picture` has room for the layout's planes.
    void Paint(const FrameView& frame, AVFrame& picture);

  private:
    std::variant<PictureConverter, PackedReader> mSource;
    const bool mPlanarRGB; // whose planes libav has in the order G, B, R
};

} // namespace corvane
