#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

extern "C" {
#include <libavutil/pixfmt.h>
}

#include "Export/Picture/PackedReader.h"
#include "Export/Picture/PictureConverter.h"
#include "Export/Targets/Target.h"

struct AVCodec;
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

/// The planes of a picture, in libav's order. Not owned.
Planes PlanesOfPicture(const AVFrame& picture);

/// What the pictures of a codec have to be, apart from what its encoder takes.
struct PixelLimits {
    int leastBits = 8;               ///< of a sample
    int mostBits = 16;               ///< the same
    std::optional<bool> wholeChroma; ///< chroma in every column, or not
};

/// The pixel formats for a codec's pictures of these frames, best first. The first keeps as much of the
/// frames as the codec can: alpha before depth, in 4:2:0 if the codec is made for players, and every bit if
/// it is lossless. The others are like it but for their depth, for an encoder that can't be opened with the
/// first. Empty if none can be filled.
std::vector<AVPixelFormat> ChoosePixels(const AVCodec& codec, const PixelLimits& limits,
                                        const StreamFacts& facts);

/// Fills pictures of libav. One thread at a time. Throws `Failure` if the conversion can't be set up.
class LibavPainter {
  public:
    /// `facts` say what frames will come.
    LibavPainter(const PixelLayout& layout, const StreamFacts& facts);
    /// Converts `frame` into `picture`, which has room for the layout's planes. `painted` is what the last
    /// call for this memory left there.
    void Paint(const FrameView& frame, AVFrame& picture, PaintedRows& painted);

  private:
    std::variant<PictureConverter, PackedReader> mSource;
    const bool mPlanarRGB; // whose planes libav has in the order G, B, R
};

} // namespace corvane
