#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ColorLevels.h"
#include "ColorSamples.h"
#include "ExpectedRows.h"
#include "FieldAnalysis.h"
#include "Finding.h"
#include "PictureRows.h"
#include "Placement.h"

namespace corvane {

/// How far colors are off, over all pictures that were added.
struct ColorFigures {
    double meanSteps = 0; ///< of the worst of R', G', B', in steps of 8 bits
    double mostSteps = 0;
    double meanDeltaE = 0; ///< CIEDE2000
    double mostDeltaE = 0;
};

/// Compares the colors of rows with those that the clip has there. Looks at some rows of each picture, and
/// keeps a fixed number of them, so that memory doesn't grow with the number of pictures. One thread at a time.
class ColorAnalysis {
  public:
    /// `tolerance` is what samples may be off beside the codec's noise, in steps of 8 bits.
    ColorAnalysis(const StreamFacts& clip, double tolerance);

    /// Takes note of a picture that shows frame `frame`, whose rows are `expected`. A picture that is turned
    /// by a quarter says nothing about rows and is passed over. Throws `std::bad_alloc`.
    void Add(const PictureRows& rows, const VideoTags& tags, Size size, const Placement& placement,
             std::int64_t frame, const ExpectedRows& expected);

    /// What was done to the colors: at most one finding of the kinds color.* and tags.matrix, tags.range, and
    /// color.depth. `shares` is what the fields' rows show, so that exchanged or blended fields aren't taken
    /// for wrong colors. Throws `std::bad_alloc`.
    std::vector<Finding> Findings(const FieldShares& shares) const;

    /// The differences between the colors as a viewer sees them and the clip's.
    ColorFigures Figures(const FieldShares& shares) const;

    /// Rows of pictures, expected and found, for curves.
    const ColorSamples& Samples() const { return mAll; }

  private:
    ColorSample SampleOf(const PictureRows& rows, std::uint32_t y, const Placement& placement,
                         const ExpectedRows& expected) const;

    const StreamFacts mClip;
    const double mTolerance;
    std::int64_t mPictures = 0;
    ColorSamples mAll;
    ColorSamples mOff; // of the pictures that are off
    FrameRanges mOffFrames;
    ColorLevels mLevels;
};

} // namespace corvane
