#include "FrameSequence.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "Engine/ClipText.h"

namespace corvane {
namespace {

constexpr std::int64_t kMostRun = 8;

} // namespace

FrameSequence::FrameSequence(const FrameRange& expected, std::int64_t clipFrames)
    : mExpected(expected), mClipFrames(clipFrames) {}

void FrameSequence::Pace::Note(std::int64_t frame) {
    if (last >= 0) {
        const std::int64_t distance = frame - last;
        least = count == 0 ? distance : std::min(least, distance);
        most = std::max(most, distance);
        ++count;
    }
    last = frame;
}

std::string FrameSequence::Pace::Text() const {
    return least == most ? fmt::format("one frame in {}", most)
                         : fmt::format("one frame in {} or {}", least, most);
}

// The frame that a picture shows: the later one if its fields show two. Where frames look so much alike that
// the reading may be off, what would come next is taken for it if it can be.
std::optional<std::int64_t> FrameSequence::Whole(const FrameReading& reading) const {
    std::optional<double> frame = reading.frame[0];
    if (!frame || (reading.frame[1] && *reading.frame[1] > *frame)) frame = reading.frame[1];
    if (!frame) return {};
    const std::int64_t next = !mLast                 ? mExpected.first + mUnread + mForeignRun
                              : mBackward > mForward ? *mLast - 1
                                                     : *mLast + 1 + mUnread;
    // Readings with a margin near 1 are hardly ever off by most of a frame.
    double tolerance = reading.margin < 1.1 ? std::min(2 * reading.margin, 0.75) : reading.margin;
    constexpr std::int64_t kUnsure = 12; // pictures at the start, when margins are not known well
    if (mMatched < kUnsure) tolerance = std::max(tolerance, 1.2);
    const auto isNear = [&](std::int64_t other) {
        return reading.margin > 0.3 && std::abs(*frame - static_cast<double>(other)) < tolerance;
    };
    if (isNear(next)) return std::clamp<std::int64_t>(next, 0, mClipFrames - 1);
    if (mLast && isNear(*mLast)) return *mLast;
    const std::int64_t nearest = std::llround(*frame);
    return reading.margin > 0 ? std::clamp<std::int64_t>(nearest, 0, mClipFrames - 1) : nearest;
}

bool FrameSequence::IsForeign(const FrameReading& reading) const {
    const auto frame = Whole(reading);
    return reading.foreign || (frame && (*frame < 0 || *frame >= mClipFrames));
}

std::optional<std::int64_t> FrameSequence::Add(const FrameReading& reading) {
    mShown.reset();
    mMargin = std::max(mMargin, reading.margin);
    if (IsForeign(reading)) {
        mForeign.Add(reading.picture);
        ++mForeignRun;
        return {};
    }
    const auto frame = Whole(reading);
    if (!frame) {
        ++mUnread;
        ++mUnreadInAll;
        return {};
    }
    ++mMatched;
    const auto last = mLast;
    const bool isSame = last == frame && mLastFields == reading.frame;
    if (!last)
        Start(*frame);
    else if (isSame || (last == frame && reading.margin > 0))
        Repeat(*frame);
    else if (*frame >= *last)
        GoOn(*frame);
    else
        GoBack(*frame);
    const bool steady = mUnread == 0 && mForeignRun == 0;
    for (const auto& field : reading.frame)
        if (field && reading.margin == 0) mSeen.Add(std::llround(*field));
    mSeen.Add(*frame);
    mLast = mShown = frame;
    mLastFields = reading.frame;
    mUnread = mForeignRun = 0;
    return last && steady ? std::optional(*frame - *last) : std::nullopt;
}

// Takes frames for shown that pictures which can't be read have probably shown.
void FrameSequence::Fill(std::int64_t first, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) mSeen.Add(first + i);
}

void FrameSequence::Start(std::int64_t frame) {
    const std::int64_t before = std::min(mUnread, frame);
    Fill(frame - before, before);
    if (mForeignRun == frame)
        for (std::int64_t i = 0; i < frame; ++i) mReplaced.Add(i);
}

void FrameSequence::GoOn(std::int64_t frame) {
    const std::int64_t gap = frame - *mLast - 1;
    if (frame > *mLast) ++mForward;
    if (gap > 0) {
        Fill(*mLast + 1, std::min(gap, mUnread));
        // A frozen picture, or a foreign one, stands for as many frames as it takes up.
        if (gap == mRun - 1 || gap == mForeignRun)
            for (std::int64_t i = 1; i <= gap; ++i) mReplaced.Add(*mLast + i);
        mGapPace.Note(frame);
    }
    if (frame > *mLast && mSeen.Has(frame)) mAgain.Add(frame);
    if (frame > *mLast) EndRun();
}

void FrameSequence::GoBack(std::int64_t frame) {
    ++mBackward;
    if (mSeen.Has(frame)) {
        mAgain.Add(frame);
    } else {
        mDisordered.Add(frame);
        mDisordered.Add(*mLast);
    }
    EndRun();
}

void FrameSequence::Repeat(std::int64_t frame) {
    if (mRun == 1) mRepeatPace.Note(frame);
    mRepeated.Add(frame);
    ++mExtra;
    ++mRun;
}

void FrameSequence::EndRun() {
    ++mRuns[std::min(mRun, kMostRun)];
    if (mRun + mLastRun == 5 && std::abs(mRun - mLastRun) == 1) ++mRunsInTurn;
    mLastRun = mRun;
    mRun = 1;
}

// Frames in whose place others were shown, foreign pictures at the end, too.
FrameSet FrameSequence::Replaced() const {
    FrameSet replaced = mReplaced;
    if (mLast && mForeignRun == mExpected.last - *mLast)
        for (std::int64_t frame = *mLast + 1; frame <= mExpected.last; ++frame) replaced.Add(frame);
    return replaced;
}

std::optional<FrameRange> FrameSequence::Extent() const {
    const std::vector<FrameRange> seen = mSeen.Ranges();
    if (seen.empty()) return {};
    return FrameRange{seen.front().first, seen.back().last};
}

std::optional<double> FrameSequence::PicturesPerFrame() const {
    const auto extent = Extent();
    const bool isRegular = !RepeatCause().empty() || mGapPace.IsRegular();
    if (!extent || !isRegular || mBackward > 0) return {};
    return static_cast<double>(mMatched) / static_cast<double>(extent->last - extent->first + 1);
}

// What makes repeats regular; empty if they aren't.
std::string FrameSequence::RepeatCause() const {
    std::int64_t runs = 0;
    for (const auto& [length, count] : mRuns) runs += count;
    const auto share = [&](std::int64_t length) {
        const auto found = mRuns.find(length);
        return found == mRuns.end() ? 0 : static_cast<double>(found->second) / static_cast<double>(runs);
    };
    if (runs < 3) return {};
    if (share(2) > 0.9) return kEachFrameTwice;
    for (std::int64_t length = 3; length < kMostRun; ++length)
        if (share(length) > 0.9) return fmt::format("every frame is shown {} times", length);
    if (share(2) + share(3) > 0.9 && static_cast<double>(mRunsInTurn) > 0.8 * static_cast<double>(runs))
        return "frames are shown for two and for three pictures in turn, as 3:2 pulldown does";
    // Where frames can't be told from their neighbors, the average has to do.
    const auto extent = Extent();
    if (mMargin > 0.3 && mExtra > 0 && extent) {
        const double length =
            static_cast<double>(mMatched) / static_cast<double>(extent->last - extent->first + 1);
        if (length > 1.9 && std::abs(length - std::round(length)) < 0.04 * length)
            return std::lround(length) == 2
                       ? kEachFrameTwice
                       : fmt::format("every frame is shown {} times", std::lround(length));
    }
    if (mRepeatPace.IsRegular())
        return mRepeatPace.Text() + " is shown again, as a conversion to a higher rate does";
    return {};
}

std::vector<Finding> FrameSequence::Findings(bool complete) const {
    std::vector<Finding> findings;
    AddMissing(complete, findings);
    AddRepeated(findings);
    AddOrder(findings);
    AddForeign(findings);
    return findings;
}

Finding FrameSequence::MissingFinding(const std::vector<FrameRange>& frames, std::string sentence,
                                      std::string cause) const {
    const std::int64_t wanted = mExpected.last - mExpected.first + 1;
    std::int64_t count = 0;
    for (const auto& [first, last] : frames) count += last - first + 1;
    return {"frames.missing",
            std::move(sentence),
            frames,
            FramesText(wanted),
            FramesText(wanted - count),
            std::move(cause),
            0.7 + 0.3 * static_cast<double>(count) / static_cast<double>(wanted)};
}

/// What is missing at the start and at the end was cut off, if frames come in order: takes it out of
/// `within`.
void FrameSequence::AddCuts(bool complete, std::vector<FrameRange>& within,
                            std::vector<Finding>& findings) const {
    const bool inOrder = mBackward <= mForward;
    const auto isBeyondDoubt = [&](const FrameRange& cut) {
        const std::int64_t count = cut.last - cut.first + 1;
        return static_cast<double>(count) > mMargin && !(mGapPace.IsRegular() && count < mGapPace.most);
    };
    if (inOrder && within.front().first == mExpected.first && mExpected.first < *mLast) {
        const FrameRange cut = within.front();
        within.erase(within.begin());
        if (isBeyondDoubt(cut))
            findings.push_back(MissingFinding({cut},
                                              fmt::format("The video begins with frame {}.", cut.last + 1),
                                              "its start was cut off"));
    }
    if (within.empty() || within.back().last != mExpected.last) return;
    const FrameRange cut = within.back();
    if (inOrder || !complete) within.pop_back();
    // Pictures that can't be read are the benefit of the doubt.
    if (inOrder && complete && isBeyondDoubt(cut) && cut.last - cut.first + 1 > mUnread)
        findings.push_back(MissingFinding({cut}, fmt::format("The video ends with frame {}.", cut.first - 1),
                                          "its end was cut off"));
}

void FrameSequence::AddMissing(bool complete, std::vector<Finding>& findings) const {
    std::vector<FrameRange> within = mSeen.Absent(mExpected, Replaced());
    if (mMatched == 0) {
        if (complete && mForeign.Count() > 0)
            findings.push_back(MissingFinding(within, "The video shows no frame of the clip.", {}));
        return;
    }
    if (!within.empty()) AddCuts(complete, within, findings);
    // The first readings may have been taken for surer than those of the whole video are.
    if (!mGapPace.IsRegular())
        std::erase_if(within, [this](const FrameRange& range) {
            return static_cast<double>(range.last - range.first + 1) <= mMargin;
        });
    if (within.empty()) return;
    std::string cause;
    if (mGapPace.IsRegular()) {
        const auto isOneFrame = [](const FrameRange& range) { return range.first == range.last; };
        cause = mGapPace.most == 2                        ? "every second frame was dropped"
                : std::ranges::all_of(within, isOneFrame) ? mGapPace.Text() + " was dropped"
                                                          : "frames were dropped at even distances";
        if (mGapPace.most > 2) cause += ", as a conversion to a lower rate does";
    }
    std::string names = NameFrames(within);
    names[0] = 'F';
    const bool isOne = within.size() == 1 && within[0].first == within[0].last;
    findings.push_back(MissingFinding(
        within,
        fmt::format("{} {} missing{}{}.", names, isOne ? "is" : "are", cause.empty() ? "" : ": ", cause),
        cause));
}

void FrameSequence::AddRepeated(std::vector<Finding>& findings) const {
    if (mRepeated.Count() + mAgain.Count() == 0) return;
    const std::int64_t longest = mRuns.empty() ? mRun : std::max(mRuns.rbegin()->first, mRun);
    const bool isInDoubt = static_cast<double>(longest - 1) <= mMargin;
    if (isInDoubt && mAgain.Count() == 0 && RepeatCause().empty()) return;
    FrameSet all;
    for (const FrameSet* some : {&mRepeated, &mAgain})
        for (const FrameRange& range : some->Ranges())
            for (std::int64_t frame = range.first; frame <= range.last; ++frame) all.Add(frame);
    const std::vector<FrameRange> frames = all.Ranges();
    std::string cause = RepeatCause();
    if (mAgain.Count() > 0) cause = mRepeated.Count() == 0 ? "a part of the clip is played again" : "";
    const std::vector<FrameRange> replaced = Replaced().Ranges();
    if (cause.empty() && !replaced.empty() && mForeign.Empty())
        cause = fmt::format("in place of {}", NameFrames(replaced));
    std::string names = NameFrames(frames);
    names[0] = 'F';
    const bool isOne = frames.size() == 1 && frames[0].first == frames[0].last;
    std::string sentence = fmt::format("{} {} shown more than once{}{}.", names, isOne ? "is" : "are",
                                       cause.empty() ? "" : ": ", cause);
    findings.push_back({"frames.repeated", std::move(sentence), frames, "each frame once",
                        CountText(mExtra + mAgain.Count(), "picture") + " too many", cause, 0.6});
}

void FrameSequence::AddOrder(std::vector<Finding>& findings) const {
    if (mDisordered.Count() == 0) return;
    const std::vector<FrameRange> frames = mDisordered.Ranges();
    const bool isReversed = mForward * 10 < mBackward;
    const std::string cause = isReversed ? "the video is played backwards" : "";
    std::string names = NameFrames(frames);
    names[0] = 'F';
    findings.push_back({"frames.order",
                        fmt::format("{} are out of order{}{}.", names, cause.empty() ? "" : ": ", cause),
                        frames, "ascending", isReversed ? "descending" : "exchanged", cause, 0.8});
}

void FrameSequence::AddForeign(std::vector<Finding>& findings) const {
    if (mForeign.Empty() || mMatched == 0) return;
    const std::vector<FrameRange> replaced = Replaced().Ranges();
    std::string names = NameFrames(mForeign.Get());
    names.replace(0, 5, "Picture"); // for "frame"
    const std::string cause =
        replaced.empty() ? "inserted" : fmt::format("in place of {}", NameFrames(replaced));
    findings.push_back({"frames.foreign",
                        fmt::format("{} of the video {} of the clip: {}.", names,
                                    mForeign.Count() == 1 ? "is none" : "are none", cause),
                        mForeign.Get(),
                        {},
                        CountText(mForeign.Count(), "picture"),
                        cause,
                        0.9});
}

} // namespace corvane
