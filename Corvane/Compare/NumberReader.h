#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "FrameReading.h"
#include "Orientation.h"
#include "Video.h"

namespace corvane {

/// Where a printed number lies in a picture, and in which scale: the frame's point (x, y), in pixels of the
/// frame, is at (left + x * scaleX, top + y * scaleY) of the picture once that is mirrored and turned back.
struct NumberPlace {
    Orientation orientation;
    double left = 0; ///< pixels of the picture turned back, as all that follow
    double top = 0;
    double scaleX = 1;
    double scaleY = 1;
    double contrast = 0; ///< of the last print that was read there, light less dark, of the range of samples
    double dark = 0;     ///< the box of that print, likewise
};

/// A number as some rows show it.
struct PrintedNumber {
    std::optional<std::int64_t> number;  ///< none if it can't be read beyond doubt
    double certainty = 0;                ///< from 0 to 1; 0 without a number
    double contrast = 0;                 ///< light less dark, of the range of samples, if it was read
    double dark = 0;                     ///< the box, likewise
    bool blended = false;                ///< two numbers are seen at once
    std::array<std::int64_t, 2> parts{}; ///< which, the stronger first, if it is blended and both were read
    bool partsKnown = false;
};

/// What the print of one picture says.
struct NumberReading {
    PrintedNumber whole; ///< by all rows
    /// By even rows and by odd rows of the picture alone; by its columns if it is turned on its side.
    std::array<PrintedNumber, 2> field;
    std::optional<NumberPlace> place; ///< where a number was read, if one was
};

/// Puts what was read into a picture's reading: the number of each field, or that of the whole picture for a
/// field that is too small to be read alone.
void NoteNumbers(const NumberReading& numbers, FrameReading& reading);

/// Reads the numbers that the plug-in prints on frames of interlaced clips. It looks at the place where it
/// found the last one, then if the frame fills the picture, and only then searches the whole picture, turned
/// and mirrored in every way. One thread at a time.
class NumberReader {
  public:
    /// For frames of that size. Throws `std::bad_alloc`.
    explicit NumberReader(Size frame);
    ~NumberReader();

    /// Reads the first plane of a picture (for R'G'B' the second, which is nearer to luma). Throws
    /// `std::bad_alloc`.
    NumberReading Read(const VideoPicture& picture);

  private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace corvane
