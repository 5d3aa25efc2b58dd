#pragma once

#include <string>
#include <vector>

#include "Comparison.h"
#include "ReportDrawings.h"
#include "ReportImage.h"

namespace corvane {

/// A picture of a report that is worth showing, and what it shows. Refers to the report.
struct ReportFigure {
    const ComparedPicture* compared = nullptr;
    std::vector<const Finding*> findings;
    bool isWorst = false; ///< one of those that are furthest off
};

/// A picture, and what is to be said below it.
struct CaptionedImage {
    ReportImage image;
    std::string caption;
};

/// A compared picture beside its frame.
struct FigureImages {
    std::vector<CaptionedImage> strips; ///< whole, and of an interlaced clip also a part that is enlarged
    Drawing rows;                       ///< the colors of rows; empty if no frame is due
};

/// The pictures that show what was found, and those that are furthest off, each once: first those of the
/// worst findings. What pictures can't show, such as times, has none. Any thread; fails only for want of
/// memory.
std::vector<ReportFigure> FiguresFor(const CompareReport& report);

/// "Picture 12 shows frame 10", and that it is far off if so, without a period. Any thread; fails only for
/// want of memory.
std::string TitleOf(const ComparedPicture& compared, bool isWorst);

/// Makes the images of one. Throws `Failure` if the clip's frame can't be made or converted, and
/// `std::bad_alloc`. Any thread.
FigureImages ImagesOf(const Clip& clip, const ComparedPicture& compared);

} // namespace corvane
