#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>

#include "Export/Picture/PackedReader.h"
#include "Export/Picture/RowScan.h"
#include "PictureGeometry.h"
#include "PictureScale.h"

namespace corvane::desktop {

/// How a frame is to be shown. Sizes and places are in device pixels.
struct PictureLook {
    FieldView fields = FieldView::kBoth;
    QSize size;     ///< of the whole picture
    QRect part;     ///< what of it is wanted: inside of it, never empty
    int square = 8; ///< side of the squares of the checkerboard under alpha

    friend bool operator==(const PictureLook&, const PictureLook&) = default;
};

/// A picture that is wanted.
struct PictureRequest {
    std::shared_ptr<const Clip> clip;
    std::int64_t frame = 0; ///< inside of the clip
    PictureLook look;
    std::uint64_t order = 0;           ///< a later wish has a higher one
    std::int64_t step = 0;             ///< of the playback that wants it
    std::shared_ptr<const Frame> held; ///< the frame, if it is at hand already
};

/// The memory that a frame of the clip takes, in bytes. The clip can be rendered. Any thread.
std::uint64_t FrameBytes(const Clip& clip);

/// Frames with more bytes are had one at a time.
inline constexpr std::uint64_t kLargeFrame = std::uint64_t{256} << 20;

/// A picture as it was made. The frame comes with it, for those who want its values.
struct Picture {
    PictureRequest request;
    QImage image; ///< opaque, of the size of the part
    std::shared_ptr<const Frame> frame;
    QString problem;              ///< why there is no picture: one sentence; empty if there is one
    std::int64_t nanoseconds = 0; ///< what making it took
};

/// Makes pictures: asks the clip for the frame, converts and scales it and lays it over a checkerboard. Keeps
/// its memory for the next one. One thread at a time; knows no widget.
class PictureMaker {
  public:
    /// Never throws: what goes wrong is the picture's problem.
    Picture Make(PictureRequest request);

  private:
    /// Reads lines of a view as B, G, R, A with premultiplied alpha. Keeps its converter for views of one
    /// format.
    class LineReader {
      public:
        /// Starts a view of a frame of the clip, which must stay until the last `Read`, and has that box.
        void Open(const Clip& clip, const FrameView& view, const Box& box);
        /// Writes the first `count` pixels of a line.
        void Read(std::uint32_t line, std::uint32_t count, std::uint8_t* out);

      private:
        std::optional<PackedReader> mReader;
        StreamFacts mFacts;
    };

    QImage MakeImage(const PictureRequest& request, const FrameView& frame);
    void Open(const Clip& clip, const FrameView& view, const Box& box, std::uint32_t columns);
    bool AverageLines(std::span<const ScaleAxis::Tap> taps, std::uint32_t firstLine);
    const std::uint8_t* LineOf(std::uint32_t line);
    bool IsFlat(std::uint32_t line) const { return line < mBox.top || line >= mBox.bottom; }

    Box mBox; // of the present view: its lines are the ones that are not flat
    LineReader mReader;
    std::uint32_t mColumns = 0;        // how many pixels of a line differ, or are beside some that do
    std::vector<std::uint8_t> mLines;  // two lines
    std::uint32_t mLineAt[2] = {0, 0}; // which they are, counted from 1
    std::vector<std::uint16_t> mSums;
    std::vector<std::uint8_t> mAverage; // of the lines that a row of the picture covers
};

} // namespace corvane::desktop
