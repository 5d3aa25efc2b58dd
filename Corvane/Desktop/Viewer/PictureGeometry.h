/// How a frame lies on the device pixels of its picture. All functions may be called from any thread.
#pragma once

#include <cstdint>

#include <QSize>

#include "Engine/ClipFormat.h"

namespace corvane::desktop {

/// Which lines of an interlaced frame are shown. The lines of one field fill the picture.
enum class FieldView : std::uint8_t { kBoth, kUpper, kLower };

/// Some lines of a frame: line i is row `first + i * step`.
struct ShownLines {
    std::uint32_t first = 0;
    std::uint32_t step = 1;
    std::uint32_t count = 0;

    /// The row of the frame that a line is.
    std::uint32_t RowOf(std::uint32_t line) const { return first + line * step; }
};

/// The lines of a frame of `height` rows that a view shows. A frame of one row has no fields.
ShownLines LinesOf(std::uint32_t height, FieldView fields);

/// The longest side of a picture, in device pixels; only absurd pixel aspects reach it.
inline constexpr int kMaxPictureSide = 1 << 24;

/// The picture of a clip with one device pixel row a frame row, in device pixels. A pixel aspect with a term
/// of 0 is square.
QSize FullSize(const ClipFormat& clip);

/// The largest picture of the clip's shape that fits into `room`, in device pixels; no side is below 1.
QSize FittedSize(const ClipFormat& clip, QSize room);

/// The column, or row, of a frame with `extent` of them that lies under place `at` of a picture which has
/// `result` device pixels. Held to the frame.
std::uint32_t UnderPlace(std::uint32_t extent, int result, int at);

} // namespace corvane::desktop
