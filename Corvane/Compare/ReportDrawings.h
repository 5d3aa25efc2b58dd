#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Comparison.h"
#include "ReportImage.h"

namespace corvane {

/// A chart, and what is to be said below it.
struct Drawing {
    std::string svg; ///< an `svg` element; empty if there is nothing to draw
    std::string caption;
};

// Functions: any thread; they fail only for want of memory.

/// A dot for every picture of a timeline, which is not empty: to the right its number, upwards the frame that
/// it shows.
Drawing TimelineDrawing(const CompareReport& report);
/// How much later than in the clip, whose frames last so many ticks, each picture is shown; empty if the
/// video has no times, or the pictures show no frames.
Drawing TimesDrawing(const CompareReport& report, std::int64_t ticksPerFrame);
/// How found colors lie to the expected ones: level by level, and over the frames, at the top and the bottom
/// of a gradient or of each field. There are colors.
std::vector<Drawing> ColorDrawings(const Clip& clip, const std::vector<ColorSample>& colors);
/// The colors of the rows of two pictures, beside the number, from the top to the bottom: of all rows or, of
/// an interlaced clip, of each field's.
Drawing RowsDrawing(const ReportImage& expected, const ReportImage& found, bool interlaced);

} // namespace corvane
