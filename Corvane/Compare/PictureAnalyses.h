#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ColorAnalysis.h"
#include "Comparison.h"
#include "ExpectedFrames.h"
#include "FieldAnalysis.h"
#include "FieldColors.h"
#include "GradientReader.h"
#include "NumberReader.h"
#include "Placement.h"
#include "Timeline.h"

namespace corvane {

/// All that is looked at in each picture of a video, in the order in which one builds on the other: where the
/// frame lies, which frame it is and when it is shown, what its fields show, and what its colors are. One
/// thread at a time; all of it throws `std::bad_alloc`, and `Failure` if the plug-in or the conversion fails.
class PictureAnalyses {
  public:
    /// `frames` are those of the clip that the video should show; `first` is its first picture. `clip` and
    /// `expected` outlive it.
    PictureAnalyses(const Clip& clip, const VideoFacts& video, const FrameRange& frames, double tolerance,
                    const VideoPicture& first, ExpectedFrames& expected);

    /// Looks at the next picture. Returns what it says about which frames it shows.
    FrameReading Add(const VideoPicture& picture, std::int64_t number);
    /// The frame that the last picture shows; none if it can't be told.
    std::optional<std::int64_t> Frame() const { return mTimeline.Frame(); }
    /// The frame that is due at the last picture; none if that can't be told.
    std::optional<std::int64_t> DueFrame() const { return mTimeline.LikelyFrame(); }
    /// The rows of the last picture in the columns that are beside the number.
    const PictureRows& Rows() const { return mRows; }
    /// Where those columns begin; 0 if they are all there are.
    std::uint32_t FirstColumn() const { return mFirstColumn; }
    /// Where frames lie, as far as it is known.
    Placement Place() const { return mPlaces.Get(); }
    /// How many pictures show a frame of the clip.
    std::int64_t Matched() const { return mTimeline.Matched(); }

    /// The colors of rows of pictures at even distances.
    const std::vector<ColorSample>& Colors() const { return MostlyTold().Samples().Get(); }

    /// All findings, one a cause. `complete`: the video was read to its end.
    std::vector<Finding> Findings(bool complete) const;
    /// What could not be told, and why.
    std::vector<std::string> Remarks() const;

  private:
    void ReadFrame(const VideoPicture& picture, FrameReading& reading);
    void MeasureColumns(const VideoPicture& picture, const Placement& placement);
    void AddColors(const VideoPicture& picture, const FrameReading& reading, const Placement& placement);
    bool IsMostlyTold() const { return mUntold <= mTimeline.Matched(); }
    const ColorAnalysis& MostlyTold() const { return IsMostlyTold() ? mColors : mUntoldColors; }

    ExpectedFrames& mExpected;
    std::optional<NumberReader> mNumbers;     // of clips whose frames have one
    std::optional<GradientReader> mGradients; // of the others, if their colors move
    PlacementFinder mPlaces;
    Timeline mTimeline;
    FieldAnalysis mFields;
    FieldColors mFieldColors;
    ColorAnalysis mColors;
    ColorAnalysis mUntoldColors; // of pictures whose frame is known by their times alone
    std::int64_t mUntold = 0;
    PictureRows mRows;
    PictureRows mActiveRows; // those that show the frame rather than bars
    ExpectedRows mExpectedRows;
    std::uint32_t mFirstColumn = 0;
};

} // namespace corvane
