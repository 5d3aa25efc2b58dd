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

/// How pictures in a pixel format of libav are filled from delivered frames.
using PixelLayout = std::variant<PlanarFormat, PackedFormat>;

// Functions: any thread; they fail only for want of memory.

/// The layout of `format`; empty if it can't be filled from such frames (gray, paletted, hardware, big-endian
/// planes, alpha that the frames don't have).
std::optional<PixelLayout> LayoutOf(AVPixelFormat format, const StreamFacts& facts);

/// Whether pictures of `format` have alpha.
bool HasAlpha(AVPixelFormat format);

/// The best of `supported` (ends with AV_PIX_FMT_NONE; null is "any") for these frames: for a lossless codec
/// the one that keeps every bit of them, else the one that most players take. AV_PIX_FMT_NONE if none can be
/// filled.
AVPixelFormat ChoosePixels(const AVPixelFormat* supported, bool lossless, const StreamFacts& facts);

/// Fills pictures of libav. One thread at a time. Throws `Failure` if the conversion can't be set up.
class LibavPainter {
  public:
    /// `facts` say what frames will come.
    LibavPainter(const PixelLayout& layout, const StreamFacts& facts);
    /// Converts `frame` into `picture`, which has room for the layout's planes.
    void Paint(const FrameView& frame, AVFrame& picture);

  private:
    std::variant<PictureConverter, PackedReader> mSource;
    const bool mPlanarRGB; // whose planes libav has in the order G, B, R
};

} // namespace corvane
