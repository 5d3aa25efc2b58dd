#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ColorLevels.h"
#include "ColorSamples.h"
#include "ColorVerdict.h"
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

/// What was done to the colors.
struct ColorReport {
    std::vector<Finding> findings;
    /// What must be of the fields so that something explains the colors.
    FieldsByColor fields = FieldsByColor::kUnknown;
};

/// Compares the colors of rows with those that the clip has there. Looks at some rows of each picture, and
/// keeps a fixed number of them, so that memory doesn't grow with the number of pictures. One thread at a
/// time.
class ColorAnalysis {
  public:
    /// `tolerance` is what samples may be off beside the codec's noise, in steps of 8 bits.
    ColorAnalysis(const StreamFacts& clip, const VideoFacts& video, double tolerance);

    /// Takes note of a picture that shows frame `frame`, whose rows are `expected`. `shares` is what its rows
    /// show of the two fields, so that exchanged or blended fields aren't taken for wrong colors. Gradients
    /// that are turned by a quarter say nothing and are passed over. Throws `std::bad_alloc`.
    void Add(const PictureRows& rows, const VideoTags& tags, const Placement& placement, std::int64_t frame,
             const ExpectedRows& expected, const FieldShares& shares);

    /// Takes note of black and white as a picture's number shows them.
    void AddPrint(const PrintLevels& print);

    /// What was done to the colors: at most one finding of the kinds color.*, tags.matrix and tags.range, or
    /// two if it takes two faults to explain them; and another one if the alpha plane was dropped. Throws
    /// `std::bad_alloc`.
    ColorReport Report() const;

    /// Rows of pictures, expected and found, for curves.
    const ColorSamples& Samples() const { return mAll; }

  private:
    /// Which rows of a picture make a sample: `lumaRows` and `chromaRows`, from `luma` and `chroma` on,
    /// `step` apart.
    struct Unit {
        std::uint32_t luma, lumaRows, chroma, chromaRows, step;
        Parity parity;
    };

    std::vector<Unit> ChooseUnits(const PictureRows& rows, const Placement& placement, bool mixed) const;
    ColorSample SampleOf(const PictureRows& rows, const Unit& unit, const SampleCoding& coding,
                         const Placement& placement, const ExpectedRows& expected) const;
    void AddLevels(const PictureRows& rows, const Unit& unit, const SampleCoding& coding,
                   const ExpectedRows& expected);
    Finding DepthFinding(const ColorLevels::Lost& lost) const;
    std::vector<Finding> FindingsOf(const ColorVerdict& verdict,
                                    const std::vector<ColorSample>& samples) const;
    const std::vector<ColorSample>& Telling() const;
    bool IsOff() const;
    bool MostlyOff() const { return mOffPictures * 10 > mPictures * 9; }

    const StreamFacts mClip;
    const double mTolerance;
    const double mCodecNoise; // what the codec may put all samples of a color off
    VideoTags mTags;          // of the last picture
    std::int64_t mPictures = 0;
    std::int64_t mOffPictures = 0;
    ColorSamples mAll;
    ColorSamples mOff; // of the pictures that are off
    FrameRanges mOffFrames;
    ColorLevels mLevels;
    PrintLevels mPrint; // summed up over pictures
    std::int64_t mPrints = 0;
    bool mLacksAlpha = false; // the clip isn't opaque, and the video has no alpha plane
};

/// How far samples are off as a viewer sees them. Any thread.
ColorFigures FiguresOf(const std::vector<ColorSample>& samples);

} // namespace corvane
