// What FieldAnalysis has to say in the end.
#include <algorithm>

#include <fmt/format.h>

#include "Engine/ClipText.h"
#include "FieldAnalysis.h"

namespace corvane {

bool FieldAnalysis::IsMany(std::int64_t pictures, std::int64_t of) const {
    return pictures * 20 >= of && (pictures >= 3 || pictures * 10 >= of * 9) && pictures > 0;
}

Finding FieldAnalysis::Made(const char* kind, const Seen& seen, const char* found, const char* cause) const {
    Finding finding;
    finding.kind = kind;
    finding.found = found;
    finding.cause = cause;
    finding.weight = 0.7;
    const bool all = seen.pictures * 10 >= mPictures * 9;
    if (!all) finding.frames = seen.frames.Get();
    finding.sentence = fmt::format("{} {}: {}.", all ? "Pictures" : "Some pictures", found, cause);
    return finding;
}

Finding FieldAnalysis::SwappedFinding(const Seen& seen) const {
    return Made("fields.swapped", seen, "show the lower field in even rows and the upper one in odd rows",
                "the lines were exchanged, or shifted by one");
}

std::vector<Finding> FieldAnalysis::Findings(FieldsByColor known) const {
    if (mScaled) return {};
    // Each step says nothing if an earlier one explains what it sees.
    std::optional<Finding> finding;
    if (known == FieldsByColor::kSwapped && !mOddShift) finding = SwappedFinding({mPictures, {}});
    if (known == FieldsByColor::kUnknown) finding = ContentFinding();
    if (!finding && known == FieldsByColor::kUnknown) finding = OneFieldFinding();
    if (!finding) finding = NumbersFinding();
    if (!finding) finding = TagFinding();
    if (!finding) return {};
    return {std::move(*finding)};
}

std::optional<Finding> FieldAnalysis::ContentFinding() const {
    const Seen &swapped = Of(Look::kSwapped), &blended = Of(Look::kBlended);
    if (IsMany(swapped.pictures, mLooked) && !mOddShift) return SwappedFinding(swapped);
    if (IsMany(blended.pictures, mLooked))
        return Made("fields.blended", blended, "show both fields mixed in every row",
                    "the fields were averaged, or deinterlaced by blending");
    if (IsMany(mChromaMixed.pictures, mChromaLooked))
        return Made("fields.chroma", mChromaMixed, "have chroma that mixes both fields",
                    "chroma was subsampled as in a progressive picture");
    return std::nullopt;
}

std::optional<Finding> FieldAnalysis::OneFieldFinding() const {
    const Seen &upper = Of(Look::kUpperOnly), &lower = Of(Look::kLowerOnly);
    const std::int64_t both = upper.pictures + lower.pictures;
    if (!IsMany(both, mLooked)) return std::nullopt;
    if (mAlternations * 10 >= (both - 1) * 8 && both > 2)
        return Made("fields.dropped", upper.pictures > lower.pictures ? upper : lower,
                    "show the upper and the lower field in turn", kFieldsInTurn);
    return upper.pictures >= lower.pictures
               ? Made("fields.dropped", upper, "show the upper field only", "the lower field was dropped")
               : Made("fields.dropped", lower, "show the lower field only", "the upper field was dropped");
}

std::optional<Finding> FieldAnalysis::NumbersFinding() const {
    const std::int64_t combined = mEarlier.pictures + mLater.pictures;
    const std::string pattern = mCadence.Pattern();
    const bool constant = std::max(mEarlier.pictures, mLater.pictures) * 10 >= mNumbered * 9;
    const bool film = combined == 0 && pattern == "2:2:2:4";
    if (!pattern.empty() && !constant && (film || combined >= 2)) {
        Seen all;
        all.pictures = mPictures;
        Finding finding = Made("fields.pulldown", all, "", "");
        finding.expected = "2";
        finding.found = pattern;
        finding.cause = fmt::format("pulldown of {}", pattern);
        finding.sentence =
            fmt::format("Frames are shown for {} fields in turn: pulldown was added.", pattern);
        return finding;
    }
    if (!IsMany(combined, mNumbered)) return std::nullopt;
    const bool later = mLater.pictures >= mEarlier.pictures;
    return Made("fields.order", later ? mLater : mEarlier,
                later ? "show a later frame in the odd rows than in the even ones"
                      : "show an earlier frame in the odd rows than in the even ones",
                "fields of two frames were put together, as if the other field came first");
}

// What the video says of its pictures' fields: their own word counts if they say that there are any.
std::optional<FieldOrder> FieldAnalysis::Told() const {
    const auto most = std::ranges::max_element(mTold.begin() + 1, mTold.end());
    if (*most * 2 > mPictures) return static_cast<FieldOrder>(most - mTold.begin());
    return mVideo.order;
}

std::optional<Finding> FieldAnalysis::TagFinding() const {
    const std::optional<FieldOrder> told = Told();
    if (mPictures == 0 || !told || *told == mClip.order) return std::nullopt;
    if (mClip.Interlaced() && (*told == FieldOrder::kUnknown || mOddShift)) return std::nullopt;
    Finding finding;
    finding.kind = "tags.order";
    finding.expected = FieldOrderText(mClip.order);
    finding.found = FieldOrderText(*told);
    finding.cause = "the tag contradicts the clip";
    finding.weight = 0.5;
    finding.sentence =
        fmt::format("The video says {}, and its pictures are {}.", finding.found, finding.expected);
    return finding;
}

} // namespace corvane
