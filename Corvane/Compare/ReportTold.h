#pragma once

#include <string>
#include <vector>

#include "Comparison.h"
#include "ReportDrawings.h"

namespace corvane {

/// What a video says of itself beside what its pictures are, drawn.
struct ToldDrawing {
    std::string kind; ///< of the finding
    Drawing drawing;
};

/// Drawings of the findings that no picture of a video shows: wrong lengths, rates, shapes of pixels and
/// orders of fields. Any thread; fails only for want of memory.
std::vector<ToldDrawing> ToldDrawings(const Clip& clip, const CompareReport& report);

} // namespace corvane
