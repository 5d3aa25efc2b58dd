#include "Comparison.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "Engine/ClipText.h"
#include "ExpectedFrames.h"
#include "FindingKinds.h"
#include "FrameReading.h"
#include "PictureAnalyses.h"
#include "ReadAhead.h"

namespace corvane {
namespace {

constexpr std::size_t kWorst = 3;
constexpr std::size_t kTimeline = 4096;
// Frames with a number are rendered whole, which can take longer than decoding does: the part around the
// number is compared in one of so many pictures.
constexpr std::int64_t kWholeEvery = 32;

/// One comparison, picture by picture.
class Comparison {
  public:
    Comparison(const Clip& clip, const Video& video, const CompareOptions& options)
        : mClip(clip), mVideo(video), mOptions(options), mFrames(clip),
          mWanted(options.frames.value_or(FrameRange{0, clip.Info().frames - 1})) {
        mReport.clip = clip.Name();
    }

    void Add(const VideoPicture& picture) {
        const std::int64_t number = mReport.framesCompared++;
        if (number == 0) {
            mSize = picture.size;
            mReport.format = picture.format;
        }
        if (picture.damaged) mDamaged.Add(number);
        if (picture.size != mSize) {
            if (mOtherSizes.Empty()) mReport.examples.otherSize = {number, mLastFrame, picture};
            mOtherSizes.Add(number);
            return;
        }
        if (!mAnalyses)
            mAnalyses.emplace(mClip, mVideo.Facts(), mWanted, mOptions.tolerance, picture, mFrames);
        const FrameReading reading = mAnalyses->Add(picture, number);
        const std::optional<std::int64_t> frame = mAnalyses->Frame();
        if (frame) mLastFrame = frame;
        if (mOptions.onReading) mOptions.onReading(reading);
        NoteShown({number, frame, picture.time});
        NoteExample(picture, reading);
        if (frame && !picture.damaged && picture.size == mFrames.Facts().size && mAnalyses->Place().IsPlain())
            MeasureErrors(picture, number, *frame);
    }

    CompareReport Finish(bool cancelled) {
        mReport.video = mVideo.Facts();
        mReport.cancelled = cancelled;
        if (mAnalyses) {
            mReport.colors = mAnalyses->Colors();
            mReport.placement = mAnalyses->Place();
            mReport.framesMatched = mAnalyses->Matched();
        }
        mReport.errors = mErrors.Get();
        AddFindings();
        AddRemarks();
        std::erase_if(mReport.findings, [this](const Finding& finding) { return IsIgnored(finding.kind); });
        std::ranges::stable_sort(mReport.findings, std::greater(), &Finding::weight);
        return std::move(mReport);
    }

  private:
    void NoteShown(const ShownFrame& shown) {
        if (shown.picture % mTimelineStep != 0) return;
        mReport.timeline.push_back(shown);
        if (mReport.timeline.size() < kTimeline) return;
        mTimelineStep *= 2;
        std::erase_if(mReport.timeline,
                      [this](const ShownFrame& other) { return other.picture % mTimelineStep != 0; });
    }

    void NoteExample(const VideoPicture& picture, const FrameReading& reading) {
        ExamplePictures& examples = mReport.examples;
        const std::optional<std::int64_t> frame = mAnalyses->Frame();
        const auto note = [&](std::optional<ComparedPicture>& example) {
            if (!example) example = {reading.picture, frame ? frame : mAnalyses->DueFrame(), picture};
        };
        if (picture.damaged) return;
        if (reading.foreign) note(examples.foreign);
        if (frame) note(examples.usual);
        const auto& [even, odd] = reading.frame;
        if (even && odd && std::abs(*even - *odd) >= 1) note(examples.twoFrames);
    }

    void MeasureErrors(const VideoPicture& picture, std::int64_t number, std::int64_t frame) {
        const ExpectedFormat format{picture.format, picture.tags.matrix};
        PictureErrors errors;
        errors.AddRows(mAnalyses->Rows(), mFrames.Codes(frame, format), mFrames.DefinedRows());
        NoteWorst(picture, number, frame, errors.MeanSquare());
        if (const std::uint32_t left = mAnalyses->FirstColumn(); left > 0 && number % kWholeEvery == 0) {
            const bool alpha = picture.format.alpha && mFrames.Facts().HasAlpha();
            errors.AddPixels(picture, mFrames.Whole(frame, format), alpha, left, mFrames.DefinedRows());
        }
        mErrors.Add(errors);
    }

    void NoteWorst(const VideoPicture& picture, std::int64_t number, std::int64_t frame, double meanSquare) {
        std::vector<ComparedPicture>& worst = mReport.worst;
        const auto place =
            std::ranges::upper_bound(worst, meanSquare, std::greater(), &ComparedPicture::meanSquare);
        if (meanSquare == 0 || (worst.size() == kWorst && place == worst.end())) return;
        worst.insert(place, {number, frame, picture, meanSquare});
        if (worst.size() > kWorst) worst.pop_back();
    }

    void AddFindings() {
        if (mAnalyses)
            mReport.findings = mAnalyses->Findings(!mReport.cancelled && mReport.video.whyCut.empty());
        if (!mOtherSizes.Empty()) AddChangeOfSize();
    }

    void AddChangeOfSize() {
        Finding finding;
        finding.kind = "geometry.size";
        finding.expected = SizeText(mSize);
        finding.found = SizeText(mReport.examples.otherSize->pixels.size);
        finding.frames = mOtherSizes.Get();
        finding.sentence =
            fmt::format("The size changes on the way: picture {} is {}, and those before it are {}.",
                        finding.frames.front().first, finding.found, finding.expected);
        finding.weight = 0.9;
        mReport.findings.push_back(std::move(finding));
    }

    void AddRemarks() {
        if (mAnalyses) mReport.remarks = mAnalyses->Remarks();
        if (!mDamaged.Empty())
            mReport.remarks.push_back(
                fmt::format("Damage was decoded in {}, first in picture {}; its errors are not counted.",
                            CountText(mDamaged.Count(), "picture"), mDamaged.Get().front().first));
        if (!mReport.video.whyCut.empty())
            mReport.remarks.push_back(
                fmt::format("The video could not be read to its end ({}).", mReport.video.whyCut));
    }

    bool IsIgnored(const std::string& kind) const {
        return std::ranges::any_of(mOptions.ignored,
                                   [&](const std::string& name) { return NamesKind(name, kind); });
    }

    const Clip& mClip;
    const Video& mVideo;
    const CompareOptions& mOptions;
    ExpectedFrames mFrames;
    const FrameRange mWanted;                 // frames of the clip that should be shown
    std::optional<PictureAnalyses> mAnalyses; // since the first picture
    Size mSize{};                             // of the first picture
    std::optional<std::int64_t> mLastFrame;   // that was told
    FrameRanges mOtherSizes;
    FrameRanges mDamaged;
    PictureErrors mErrors;
    std::int64_t mTimelineStep = 1;
    CompareReport mReport;
};

/// How many pictures will come, as far as the video tells; else 0.
std::int64_t ExpectedPictures(const VideoFacts& video) {
    if (video.pictures) return *video.pictures;
    const auto [scale, sampleSize] = video.averageRate;
    if (!video.duration || video.timeBase.sampleSize == 0 || sampleSize == 0) return 0;
    constexpr double kMost = 1e15; // a file may tell anything
    return static_cast<std::int64_t>(std::clamp(static_cast<double>(*video.duration) * video.timeBase.scale /
                                                    video.timeBase.sampleSize * scale / sampleSize,
                                                0.0, kMost));
}

void CheckRequest(const Clip& clip, const CompareOptions& options) {
    if (const std::string why = clip.WhyNotRenderable(); !why.empty())
        throw Failure(fmt::format("{}: {}", clip.Name(), why));
    if (!options.frames) return;
    for (const std::int64_t frame : {options.frames->first, options.frames->last})
        if (const std::string why = clip.WhyNoFrameAt(frame); !why.empty())
            throw UsageFailure(fmt::format("{}: {}", clip.Name(), why));
}

} // namespace

CompareReport CompareClip(const Clip& clip, Video& video, const CompareOptions& options,
                          const CompareProgress& progress, const std::atomic<bool>& cancel) {
    CheckRequest(clip, options);
    const std::int64_t total = ExpectedPictures(video.Facts());
    Comparison comparison(clip, video, options);
    {
        ReadAhead pictures(video);
        std::int64_t done = 0;
        while (!cancel) {
            const std::optional<VideoPicture> picture = pictures.Next(cancel);
            if (!picture) break;
            comparison.Add(*picture);
            progress(++done, total);
        }
    }
    return comparison.Finish(cancel);
}

} // namespace corvane
