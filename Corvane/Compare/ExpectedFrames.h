#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Engine/Clip.h"
#include "Export/Picture/PictureConverter.h"

namespace corvane {

/// The samples that the rows of each plane should have beside the number, in code values of a video.
using RowCodes = std::array<std::vector<std::uint16_t>, 4>;

/// How a video wants the frames of a clip: the format of its pictures, and the matrix of its Y'CbCr.
struct ExpectedFormat {
    PlanarFormat planar;
    int matrix = 2; ///< code point of ITU-T H.273; 2 for the usual one of the clip

    bool operator==(const ExpectedFormat&) const = default;
};

/// Makes what a video should show. Of most pictures only the rows' colors are needed, which cost next to
/// nothing: those of a clip that does not move are made once, and those of a gradient in a frame of a few
/// columns. One thread at a time; all of it throws `Failure` if the plug-in or the conversion fails, and
/// `std::bad_alloc`.
class ExpectedFrames {
  public:
    /// The clip outlives it and has frames.
    explicit ExpectedFrames(const Clip& clip);

    const StreamFacts& Facts() const { return mFacts; }
    /// Whether the rows of one frame have other colors than those of another.
    bool RowsMove() const { return mNarrowClip != nullptr; }
    /// What the numbers of all frames cover at most; empty if none is printed.
    const Box& NumberBox() const { return mNumberBox; }
    /// How many rows have a defined color: of interlaced frames with an odd number the last one has not.
    std::uint32_t DefinedRows() const { return mDefinedRows; }

    /// A few columns of frame `index`, without the number. Valid until the next call.
    const FrameView& Rows(std::int64_t index);
    /// What the rows of that frame should be in a video. Valid until the next call.
    const RowCodes& Codes(std::int64_t index, const ExpectedFormat& format);
    /// All of that frame, with its number. Takes some milliseconds. Valid until the next call.
    const PlanarPicture& Whole(std::int64_t index, const ExpectedFormat& format);

  private:
    // Planes of the frames of one format.
    struct Picture {
        std::optional<PictureConverter> converter;
        std::vector<std::byte> bytes;
        PlanarPicture planes;
        PaintedRows painted;

        void Shape(const StreamFacts& facts, const PlanarFormat& format);
    };

    void FindNumberBox();
    void CopyStarts(const FrameView& frame);
    void SetFormat(const ExpectedFormat& format);
    void ReadCodes();

    const Clip& mClip;
    const StreamFacts mFacts;
    std::unique_ptr<Clip> mNarrowClip; // for rows that move
    std::uint32_t mDefinedRows;
    Box mNumberBox;
    Frame mNarrowFrame;
    std::vector<std::byte> mStarts; // the narrow frame of rows that don't move
    FrameView mRows;
    std::int64_t mIndex = -1; // of the frame whose rows these are
    ExpectedFormat mFormat;
    bool mHasFormat = false;
    std::int64_t mCodesIndex = -1;
    Picture mNarrow;
    Picture mWhole;
    RowCodes mCodes;
};

} // namespace corvane
