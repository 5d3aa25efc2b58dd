#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "PixelRows.h"
#include "RowScan.h"
#include "StreamFacts.h"
#include "ZimgGraph.h"

namespace corvane {

/// What a picture in planes looks like. R'G'B' is full range; floats are linear light with premultiplied
/// alpha, as compositing has it; chroma is sited left (as in MPEG-2), for
/// interlaced 4:2:0 in each field.
struct PlanarFormat {
    bool yCbCr = true;
    int bits = 8;       ///< 8 in bytes, 9 to 16 in words of the machine's byte order, 32 for floats of R'G'B'
    int subsampleW = 0; ///< logarithm to the base of 2
    int subsampleH = 0;
    bool fullRange = false; ///< of Y'CbCr
    bool alpha = false;     ///< a fourth plane, full range

    int Planes() const { return alpha ? 4 : 3; }
    bool IsFloat() const { return bits > 16; }
    /// Bytes of one component.
    std::size_t SampleBytes() const { return IsFloat() ? 4 : bits > 8 ? 2 : 1; }
    /// Columns of a plane of a picture with `width` columns.
    std::uint32_t PlaneWidth(int plane, std::uint32_t width) const;
    /// Rows of a plane of a picture with `height` rows.
    std::uint32_t PlaneHeight(int plane, std::uint32_t height) const;

    bool operator==(const PlanarFormat&) const = default;
};

/// Planes to write to, not owned, in the order Y', Cb, Cr, A or R', G', B', A. Strides are bytes from row to
/// row. Rows need no alignment.
struct PlanarPicture {
    std::array<std::byte*, 4> plane{};
    std::array<std::ptrdiff_t, 4> stride{};

    /// The start of a row.
    std::byte* Row(int at, std::uint32_t y) const {
        return plane[static_cast<std::size_t>(at)] + stride[static_cast<std::size_t>(at)] * std::ptrdiff_t{y};
    }
};

/// What a conversion left in the memory of a picture, so that the next one into it writes only what differs.
/// Kept with that memory, for as long as nothing else writes there. Made fresh, it says that nothing is
/// known.
struct PaintedRows {
    std::array<std::vector<std::int32_t>, 4> samples; ///< of each plane's rows, beside the box; -1: not known
    Box box;                                          ///< in pixels of the frame
};

/// Converts delivered frames into planes: matrix, range, bit depth and subsampling by zimg, without
/// dithering. What is outside the box that `FindBox` finds is converted once a row and spread; the bytes are
/// those of a conversion of every pixel. One thread at a time.
class PictureConverter {
  public:
    /// For frames of the size and format that `facts` tells.
    PictureConverter(const StreamFacts& facts, const PlanarFormat& format);

    /// Writes the frame's picture to `out`, which has room for all planes of the format. `painted` is what
    /// the last conversion in this format left there. Throws `Failure` if zimg has no such conversion, and
    /// `std::bad_alloc`; nothing is known of `out` then.
    void Convert(const FrameView& frame, const PlanarPicture& out, PaintedRows& painted);
    /// The same without a shortcut.
    void ConvertWhole(const FrameView& frame, const PlanarPicture& out);

  private:
    struct Field;
    /// The rows of a field as a narrow picture, kept until the rows' colors change.
    struct Strip {
        std::vector<std::byte> starts; // the first pixel of each row that `planes` are made of
        PlaneBuffer planes;
    };

    void ConvertRows(const FrameView& frame, const PlanarPicture& out, const Box& keep, PaintedRows& painted);
    void ConvertStrip(const FrameView& frame, const Field& field, Strip& strip);
    void ConvertBox(const FrameView& frame, const Box& region, const Box& keep, const PlanarPicture& out);
    void RunField(const Field& field, std::uint32_t width, PlaneBuffer& result);
    void MakeLinear(PlaneBuffer& planes, std::uint32_t width, std::uint32_t rows) const;
    void UnpackBox(const FrameView& frame, const Box& region, const Field& field);
    void UnpackStarts(const Field& field);
    void KeepBox(const Box& region, const Box& keep, const Field& field, const PlanarPicture& out);
    void Spread(const Field& field, Strip& strip, const PlanarPicture& out, const Box& keep,
                PaintedRows& painted);
    void PadRows(const Field& field, std::uint32_t width, std::uint32_t paddedWidth);
    Box InPlane(int plane, const Box& box) const;
    ZimgGraph& GraphFor(std::uint32_t width, std::uint32_t rows, int parity);
    zimg_image_format FormatOf(bool result, std::uint32_t width, std::uint32_t rows, int parity) const;
    std::uint32_t FieldCount() const { return mPerField ? 2 : 1; }

    const StreamFacts mFacts;
    const PlanarFormat mFormat;
    const RK_PixelFormat mRead; // as what the frames' pixels are taken apart
    const bool mPerField;       // interlaced, and chroma is halved vertically
    Strip mStrips[2];           // of each field
    std::vector<std::byte> mStarts;
    PlaneBuffer mColumn; // the starts taken apart
    PlaneBuffer mSource;
    PlaneBuffer mResult;
    std::map<std::tuple<std::uint32_t, std::uint32_t, int>, ZimgGraph> mGraphs;
};

} // namespace corvane
