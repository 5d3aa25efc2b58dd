#include "Timeline.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "Engine/ClipText.h"

#include "FrameSequence.h"
#include "StampGrid.h"
#include "lummediatypes.h"

namespace corvane {
namespace {

double SecondsPerUnit(const VideoFacts& video) {
    return video.timeBase.sampleSize == 0
               ? 0
               : static_cast<double>(video.timeBase.scale) / video.timeBase.sampleSize;
}

double UnitsPerFrame(const TimelineFacts& facts) {
    const double seconds = static_cast<double>(facts.ticksPerFrame) / lummediatypes::kTicksPerSecond;
    const double unit = SecondsPerUnit(facts.video);
    return unit == 0 ? 0 : seconds / unit;
}

// A rate in words; drops zeros that say nothing.
std::string RateText(double rate) {
    std::string text = fmt::format("{:.3f}", rate);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
}

} // namespace

struct Timeline::State {
    explicit State(const TimelineFacts& of)
        : facts(of), sequence(of.frames, of.clipFrames), grid(UnitsPerFrame(of)) {}

    TimelineFacts facts;
    FrameSequence sequence;
    StampGrid grid;
    std::int64_t pictures = 0;
    std::int64_t foreign = 0;
    FrameReading last;
    FrameReading known; // the last one whose frame is known, or the first one
    std::int64_t knownFrame = 0;

    double ClipRate() const {
        return static_cast<double>(lummediatypes::kTicksPerSecond) / static_cast<double>(facts.ticksPerFrame);
    }
    bool KeepsTime() const;
    void AddCount(std::vector<Finding>& findings) const;
    void AddRate(std::vector<Finding>& findings) const;
    void AddTaggedRate(std::vector<Finding>& findings) const;
    void AddJitter(std::vector<Finding>& findings) const;
    void AddDuration(std::vector<Finding>& findings) const;
};

Timeline::Timeline(const TimelineFacts& facts) : mState(std::make_unique<State>(facts)) {}

Timeline::~Timeline() = default;

void Timeline::Add(const FrameReading& reading) {
    State& state = *mState;
    ++state.pictures;
    if (reading.foreign) ++state.foreign;
    std::optional<std::int64_t> gone;
    if (state.facts.framesDiffer) gone = state.sequence.Add(reading);
    state.grid.Add(reading.time, gone);
    state.last = reading;
    const std::optional<std::int64_t> frame = Frame();
    if (!frame && state.pictures > 1) return;
    state.known = reading;
    state.knownFrame = frame.value_or(state.facts.frames.first);
}

std::optional<std::int64_t> Timeline::Frame() const {
    if (mState->facts.framesDiffer) return mState->sequence.Frame();
    const std::int64_t frame = mState->facts.frames.first + mState->pictures - 1;
    return frame > mState->facts.frames.last ? std::nullopt : std::optional(frame);
}

std::optional<std::int64_t> Timeline::LikelyFrame() const {
    const FrameReading &from = mState->known, &to = mState->last;
    std::int64_t gone = to.picture - from.picture;
    if (from.time && to.time && mState->grid.UnitsPerFrame() > 0)
        gone = std::llround(static_cast<double>(*to.time - *from.time) / mState->grid.UnitsPerFrame());
    const std::int64_t frame = mState->knownFrame + gone;
    return frame < 0 || frame >= mState->facts.clipFrames ? std::nullopt : std::optional(frame);
}

std::int64_t Timeline::Matched() const {
    return mState->facts.framesDiffer ? mState->sequence.Matched() : mState->pictures - mState->foreign;
}

std::vector<Finding> Timeline::Findings(bool complete) const {
    std::vector<Finding> findings;
    if (mState->facts.framesDiffer)
        findings = mState->sequence.Findings(complete);
    else if (complete)
        mState->AddCount(findings);
    if (!mState->grid.HasTimes() || mState->grid.UnitsPerFrame() == 0 || mState->grid.PictureLength() <= 0)
        return findings;
    mState->AddRate(findings);
    mState->AddTaggedRate(findings);
    mState->AddJitter(findings);
    if (complete) mState->AddDuration(findings);
    return findings;
}

std::vector<std::string> Timeline::Remarks() const {
    std::vector<std::string> remarks;
    if (!mState->facts.framesDiffer)
        remarks.emplace_back(
            "The clip's frames are alike, so that pictures are told apart by their order and "
            "their times only.");
    if (mState->sequence.Unread() > 0)
        remarks.push_back(fmt::format("It can't be told of {} which frame is shown.",
                                      CountText(mState->sequence.Unread(), "picture")));
    if (!mState->grid.HasTimes() && mState->pictures > 1)
        remarks.emplace_back("Pictures of the video have no times, so that only their order was looked at.");
    return remarks;
}

// If frames are alike, there may still be too many pictures or too few.
void Timeline::State::AddCount(std::vector<Finding>& findings) const {
    const std::int64_t expected = facts.frames.last - facts.frames.first + 1;
    const std::int64_t shown = pictures - foreign;
    if (shown == expected || KeepsTime()) return;
    const std::string kind = shown < expected ? "frames.missing" : "frames.repeated";
    findings.push_back(
        {kind,
         fmt::format("The video has {}, {} {} than the clip has frames.", CountText(shown, "picture"),
                     std::abs(shown - expected), shown < expected ? "fewer" : "more"),
         {},
         CountText(expected, "picture"),
         CountText(shown, "picture"),
         {},
         0.7});
}

// Whether another rate has as many more or fewer pictures as it takes to last as long as the clip.
bool Timeline::State::KeepsTime() const {
    if (!grid.HasTimes() || grid.UnitsPerFrame() == 0) return false;
    const double ratio = grid.PictureLength() / grid.UnitsPerFrame();
    if (facts.framesDiffer) {
        const auto perFrame = sequence.PicturesPerFrame();
        const double tolerance = 2.5 / static_cast<double>(std::max<std::int64_t>(sequence.Matched(), 1));
        return perFrame && std::abs(ratio * *perFrame - 1) < tolerance + 1e-3;
    }
    const auto expected = static_cast<double>(facts.frames.last - facts.frames.first + 1);
    return std::abs(ratio - 1) > 0.005 &&
           std::abs(static_cast<double>(pictures - foreign) * ratio - expected) < 1.5;
}

void Timeline::State::AddRate(std::vector<Finding>& findings) const {
    const double expected = grid.UnitsPerFrame();
    const double found = grid.PictureLength();
    if (std::abs(found - expected) <= grid.Uncertainty() + expected * 2e-6) return;
    if (facts.framesDiffer && KeepsTime()) return;
    const double rate = 1 / (found * SecondsPerUnit(facts.video));
    const double drift = (found - expected) * static_cast<double>(pictures) * SecondsPerUnit(facts.video);
    const std::string cause =
        std::abs(drift) < 0.001
            ? ""
            : fmt::format("{} by {:.3f} s over the whole", drift > 0 ? "late" : "early", std::abs(drift));
    findings.push_back({"time.rate",
                        fmt::format("Pictures are shown at {} a second instead of {}{}{}.", RateText(rate),
                                    RateText(ClipRate()), cause.empty() ? "" : ": the last one is ", cause),
                        {},
                        RateText(ClipRate()),
                        RateText(rate),
                        {},
                        std::min(0.5 + std::abs(found / expected - 1), 0.9)});
}

// What the video says of its rate against what it does.
void Timeline::State::AddTaggedRate(std::vector<Finding>& findings) const {
    const double rate = 1 / (grid.PictureLength() * SecondsPerUnit(facts.video));
    const double doubt = grid.Uncertainty() / grid.PictureLength();
    const auto differs = [&](const Rate& told) {
        if (told.scale == 0 || told.sampleSize == 0) return false;
        const double ratio = static_cast<double>(told.scale) / told.sampleSize / rate;
        // Fields are counted by some, and a rate that is rounded is told by many.
        return std::abs(ratio - 1) > doubt + 0.005 && std::abs(ratio - 2) > 0.01 &&
               std::abs(ratio - 0.5) > 0.005;
    };
    if (grid.Irregular().first > 0) return;
    for (const Rate& told : {facts.video.averageRate, facts.video.nominalRate}) {
        if (!differs(told)) continue;
        const std::string text = RateText(static_cast<double>(told.scale) / told.sampleSize);
        findings.push_back(
            {"tags.rate",
             fmt::format("The video says that it has {} pictures a second; it has {}.", text, RateText(rate)),
             {},
             RateText(rate),
             text,
             {},
             0.4,
             {rate, static_cast<double>(told.scale) / told.sampleSize}});
        return;
    }
}

void Timeline::State::AddJitter(std::vector<Finding>& findings) const {
    const auto [off, most] = grid.Irregular();
    if (off == 0) return;
    const double milliseconds = most * SecondsPerUnit(facts.video) * 1000;
    findings.push_back({"time.jitter",
                        fmt::format("Times are up to {:.1f} ms off a steady rate, at {} of the pictures.",
                                    milliseconds, off),
                        {},
                        "a steady rate",
                        fmt::format("up to {:.1f} ms off", milliseconds),
                        {},
                        0.5});
}

void Timeline::State::AddDuration(std::vector<Finding>& findings) const {
    if (!facts.video.duration || grid.Unstamped() > 0) return;
    const auto told = static_cast<double>(*facts.video.duration);
    const double found = grid.Length();
    if (std::abs(told - found) <= std::max(2 * grid.PictureLength(), 2.0)) return;
    const double unit = SecondsPerUnit(facts.video);
    findings.push_back({"time.duration",
                        fmt::format("The video says that it lasts {:.3f} s; its pictures last {:.3f} s.",
                                    told * unit, found * unit),
                        {},
                        fmt::format("{:.3f} s", found * unit),
                        fmt::format("{:.3f} s", told * unit),
                        {},
                        0.4,
                        {found * unit, told * unit}});
}

} // namespace corvane
