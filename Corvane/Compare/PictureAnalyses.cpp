#include "PictureAnalyses.h"

#include <algorithm>
#include <iterator>

#include "OneCause.h"

namespace corvane {
namespace {

// Colors are taken to move in straight lines between so many frames: those in linear light don't quite.
constexpr std::int64_t kKeys = 9;

// Whether the shape of pixels is as if frames were cropped: what is scaled in one direction alone has pixels
// of another shape.
bool LooksCropped(const ClipFormat& clip, const VideoFacts& video) {
    if (!video.aspect) return video.size.width == clip.size.width;
    return std::abs(AspectOf(*video.aspect) / AspectOf(clip.aspect) - 1) < 1e-3 &&
           std::abs(double(video.size.width) * clip.size.height /
                        (double(video.size.height) * clip.size.width) -
                    1) > 1e-3;
}

std::optional<GradientReader> MakeGradients(ExpectedFrames& expected, const Clip& clip,
                                            const VideoFacts& video, const VideoPicture& picture) {
    if (!expected.RowsMove() || clip.Info().format.Interlaced()) return std::nullopt;
    std::vector<KeyFrame> keys;
    ExpectedRows rows;
    const std::int64_t last = clip.Info().frames - 1;
    for (std::int64_t i = 0; i < kKeys; ++i) {
        const std::int64_t frame = last * i / (kKeys - 1);
        if (!keys.empty() && keys.back().frame == frame) continue;
        rows.Read(expected.Rows(frame), expected.Facts());
        KeyFrame key{frame, expected.Codes(frame, {picture.format, picture.tags.matrix}), {}};
        for (std::uint32_t row = 0; row < rows.Height(); ++row) key.colors.push_back(rows.At(row));
        keys.push_back(std::move(key));
    }
    const SampleCoding coding = CodingOf(picture.format, picture.tags, picture.size.height);
    const CodingFacts facts = CodingFactsOf(expected.Facts(), coding, picture.tags, picture.format.alpha);
    GradientChanges changes{{}, LooksCropped(clip.Info().format, video)};
    for (ColorHypothesis& hypothesis : FixedHypotheses(facts))
        changes.colors.push_back(std::move(hypothesis.change));
    GradientReader reader(std::move(keys), picture.format.bits, coding, std::move(changes));
    if (!reader.Resolution()) return std::nullopt;
    return reader;
}

TimelineFacts FactsOfTimeline(const Clip& clip, const VideoFacts& video, const FrameRange& frames,
                              bool framesDiffer) {
    return {frames, clip.Info().frames, clip.Info().ticksPerFrame, framesDiffer, video};
}

/// The rows that show the frame, from the top of the picture to its bottom.
void TakeActive(const PictureRows& rows, const Placement& placement, PictureRows& active) {
    active.format = rows.format;
    for (int plane = 0; plane < 4; ++plane) {
        const auto& from = rows.plane[static_cast<std::size_t>(plane)];
        auto& to = active.plane[static_cast<std::size_t>(plane)];
        to.clear();
        if (from.empty()) continue;
        const std::uint32_t top = std::min<std::uint32_t>(
            rows.format.PlaneHeight(plane, placement.active.top), std::uint32_t(from.size()) - 1);
        const std::uint32_t bottom = std::clamp<std::uint32_t>(
            rows.format.PlaneHeight(plane, placement.active.bottom), top + 1, std::uint32_t(from.size()));
        to.assign(from.begin() + top, from.begin() + bottom);
    }
}

} // namespace

PictureAnalyses::PictureAnalyses(const Clip& clip, const VideoFacts& video, const FrameRange& frames,
                                 double tolerance, const VideoPicture& first, ExpectedFrames& expected)
    : mExpected(expected), mGradients(MakeGradients(expected, clip, video, first)),
      mPlaces(clip.Info().format, video),
      mTimeline(FactsOfTimeline(clip, video, frames, clip.Info().format.Interlaced() || mGradients)),
      mFields(expected.Facts(), video), mColors(expected.Facts(), video, tolerance),
      mUntoldColors(expected.Facts(), video, tolerance) {
    if (clip.Info().format.Interlaced()) mNumbers.emplace(expected.Facts().size);
}

FrameReading PictureAnalyses::Add(const VideoPicture& picture, std::int64_t number) {
    FrameReading reading;
    reading.picture = number;
    reading.time = picture.time;
    ReadFrame(picture, reading);
    if (reading.foreign) mPlaces.Withdraw();
    mTimeline.Add(reading);
    if (!reading.foreign && !picture.damaged) AddColors(picture, reading, mPlaces.Get());
    return reading;
}

void PictureAnalyses::ReadFrame(const VideoPicture& picture, FrameReading& reading) {
    // Bars stay as they are, nearly always.
    const bool lookForBars = reading.picture < 8 || reading.picture % 16 == 0;
    const Box active = lookForBars ? FindActive(picture) : mPlaces.Get().active;
    std::optional<NumberPlace> place;
    if (mNumbers) {
        const NumberReading numbers = mNumbers->Read(picture);
        NoteNumbers(numbers, reading);
        place = numbers.place;
        if (place) mColors.AddPrint({255 * place->dark, 255 * (place->dark + place->contrast)});
    }
    mPlaces.Add(active, place);
    const Placement placement = mPlaces.Get();
    MeasureColumns(picture, placement);
    if (reading.frame[0] || reading.frame[1])
        mFieldColors.Learn(mRows, placement);
    else if (mNumbers)
        reading.foreign = mFieldColors.AreOthers(mRows, placement);
    if (!mGradients) return;
    TakeActive(mRows, placement, mActiveRows);
    mGradients->Read(mActiveRows, placement.active.top, reading);
    mPlaces.Turn({.flipped = mGradients->IsFlipped()});
    mPlaces.SetRows(mGradients->Axis());
}

/// Measures the columns beside the number, or as good as that.
void PictureAnalyses::MeasureColumns(const VideoPicture& picture, const Placement& placement) {
    Box columns = placement.active;
    const Box& number = mExpected.NumberBox();
    if (!number.Empty() && placement.quarterTurns % 2 == 0) {
        // A little more, for what codecs smear.
        constexpr double kMargin = 16;
        const bool mirrored = placement.mirrored != (placement.quarterTurns == 2);
        const double share = std::min((number.right + kMargin) / mExpected.Facts().size.width, 0.75);
        const double at = placement.left + placement.width * (mirrored ? 1 - share : share);
        const auto x = static_cast<std::uint32_t>(std::clamp<double>(at, columns.left, columns.right - 1));
        (mirrored ? columns.right : columns.left) = std::max(x, columns.left + mirrored);
    }
    mFirstColumn = columns.left;
    MeasureRows(picture, columns.left, columns.right, mRows);
}

void PictureAnalyses::AddColors(const VideoPicture& picture, const FrameReading& reading,
                                const Placement& placement) {
    const bool isTold = mTimeline.Frame().has_value();
    // A picture whose number alone can't be read is left out.
    const bool guesses = mGradients || mTimeline.Matched() == 0;
    const auto frame = isTold || !guesses ? mTimeline.Frame() : mTimeline.LikelyFrame();
    if (!frame) return;
    mUntold += !isTold;
    mExpectedRows.Read(mExpected.Rows(*frame), mExpected.Facts());
    // Fields of pictures that may be of something else say nothing.
    FieldShares shares;
    if (isTold || mGradients) shares = mFields.Add(mRows, reading, picture.order, placement, mExpectedRows);
    const auto add = [&](ColorAnalysis& colors) {
        colors.Add(mRows, picture.tags, placement, *frame, mExpectedRows, shares);
    };
    if (isTold || reading.miscolored) add(mColors);
    if (!isTold) add(mUntoldColors);
}

std::vector<Finding> PictureAnalyses::Findings(bool complete) const {
    std::vector<Finding> all = mTimeline.Findings(complete);
    const auto add = [&all](std::vector<Finding> more) { std::ranges::move(more, std::back_inserter(all)); };
    add(mPlaces.Findings());
    ColorReport colors = MostlyTold().Report();
    add(mFields.Findings(colors.fields));
    add(std::move(colors.findings));
    KeepCauses(all);
    return all;
}

std::vector<std::string> PictureAnalyses::Remarks() const {
    std::vector<std::string> all = mTimeline.Remarks();
    if (!IsMostlyTold())
        all.emplace_back(mGradients ? "By their colors most pictures show no frame of the clip: they were "
                                      "compared with the frames that should be shown at their times."
                                    : "The colors of pictures were compared although no number tells that "
                                      "they are the clip's.");
    std::ranges::move(mPlaces.Remarks(), std::back_inserter(all));
    return all;
}

} // namespace corvane
