#include "FieldAnalysis.h"

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

// How far the colors of two fields must lie apart to be told from each other, in steps of 8 bits, and what is
// enough to confirm something.
constexpr double kFarEnough = 12;
constexpr double kConfirming = 5;
// How much of their difference fields show at least if they are clear, if nothing was done to them, and at
// most if they look alike.
constexpr double kClear = 0.6;
constexpr double kWhole = 0.9;
constexpr double kAlike = 0.25;
// Frame numbers of gradients are read with less than half a frame of error.
constexpr double kAnotherFrame = 0.6;
constexpr std::size_t kMostRanges = 1024;

// The mean of the even or of the odd rows of a plane, between two rows.
double MeanOfField(const std::vector<RowSamples>& rows, std::size_t first, std::size_t last,
                   std::size_t parity) {
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t y = first + (first % 2 != parity); y < std::min(last, rows.size()); y += 2) {
        sum += double{rows[y].mean};
        ++count;
    }
    return count == 0 ? 0.0 : sum / static_cast<double>(count);
}

} // namespace

FieldAnalysis::FieldAnalysis(const StreamFacts& clip, const VideoFacts& video) : mClip(clip), mVideo(video) {}

// Projects what both fields show on the difference that they should have, in luma or in chroma (all of R'G'B'
// counts as luma). Nothing if that difference is too small.
std::optional<FieldAnalysis::Measured> FieldAnalysis::Measure(const PictureRows& rows,
                                                              const Placement& placement,
                                                              const ExpectedRows& expected, bool chroma,
                                                              double farEnough) const {
    const PlanarFormat& format = rows.format;
    if (chroma && !format.yCbCr) return std::nullopt;
    const auto height = static_cast<std::uint32_t>(rows.plane[0].size());
    const SampleCoding coding = CodingOf(format, mVideo.tags, height);
    const Codes upper = Encode(expected.At(0), coding), lower = Encode(expected.At(1), coding);
    const std::size_t from = chroma ? 1 : 0, to = format.yCbCr && !chroma ? 1 : 3;
    const int down = chroma ? format.subsampleH : 0;
    const std::size_t first = (placement.active.top + (1u << down) - 1) >> down;
    const std::size_t last = placement.active.bottom >> down;
    double length = 0, apart = 0, middle = 0, distance = 0;
    for (std::size_t plane = from; plane < to; ++plane) {
        const double wanted = upper[plane] - lower[plane];
        const double even = MeanOfField(rows.plane[plane], first, last, 0);
        const double odd = MeanOfField(rows.plane[plane], first, last, 1);
        length += wanted * wanted;
        apart += (even - odd) * wanted;
        const double mean = (even + odd) / 2.0 - lower[plane];
        middle += mean * wanted;
        distance += mean * mean;
    }
    if (std::sqrt(length) < std::ldexp(farEnough, coding.bits - 8)) return std::nullopt;
    const double aside = std::sqrt(std::max(0.0, distance - middle * middle / length));
    return Measured{apart / length, middle / length, std::ldexp(aside, 8 - coding.bits)};
}

FieldAnalysis::Look FieldAnalysis::LookOf(const Measured& measured) {
    if (measured.apart > kClear) return Look::kClear;
    if (measured.apart < -kClear) return Look::kSwapped;
    if (measured.aside > kFarEnough) return Look::kUnclear;
    if (std::abs(measured.apart) > kAlike) return measured.apart > 0 ? Look::kBlended : Look::kUnclear;
    if (measured.middle > 0.75) return Look::kUpperOnly;
    if (measured.middle < 0.25) return Look::kLowerOnly;
    return measured.middle > 0.35 && measured.middle < 0.65 ? Look::kBlended : Look::kUnclear;
}

// Whether chroma is of both fields in every row, or of one alone: chroma that is neither is of wrong colors.
bool FieldAnalysis::MixesChroma(const Measured& chroma) {
    const Look look = LookOf(chroma);
    if (IsOneField(look)) return std::min(std::abs(chroma.middle), std::abs(chroma.middle - 1.0)) < 0.15;
    return look == Look::kBlended || look == Look::kSwapped;
}

void FieldAnalysis::Note(Seen& seen, const FrameReading& reading) {
    ++seen.pictures;
    if (reading.frame[0] && seen.frames.Get().size() < kMostRanges)
        seen.frames.Add(std::llround(*reading.frame[0]));
}

FieldShares FieldAnalysis::Add(const PictureRows& rows, const FrameReading& reading, FieldOrder order,
                               const Placement& placement, const ExpectedRows& expected) {
    ++mPictures;
    ++mTold[static_cast<std::size_t>(order)];
    // The last placement is the one that is known best.
    mScaled = placement.quarterTurns % 2 != 0 || std::abs(placement.height - mClip.size.height) > 0.25;
    mOddShift =
        std::llround(placement.top) % 2 != 0 || (placement.IsUpsideDown() && mClip.size.height % 2 == 0);
    AddNumbers(reading, order);
    if (!mClip.Interlaced() || expected.Height() < 4 || !expected.FieldsAreSolid()) return {};
    const std::optional<Measured> chroma = Measure(rows, placement, expected, true, kFarEnough);
    std::optional<Measured> luma =
        Measure(rows, placement, expected, false, chroma ? kConfirming : kFarEnough);
    const std::optional<Measured> sure = Measure(rows, placement, expected, false, kFarEnough);
    // A small difference of luma counts only if it is there, one way or the other: a low rate can take it
    // away.
    if (!sure && luma && LookOf(*luma) != Look::kClear && LookOf(*luma) != Look::kSwapped) luma.reset();
    if (!luma && !chroma) return {};
    return AddLooks(luma, chroma, reading);
}

FieldShares FieldAnalysis::AddLooks(const std::optional<Measured>& luma,
                                    const std::optional<Measured>& chroma, const FrameReading& reading) {
    ++mLooked;
    Look look = LookOf(luma ? *luma : *chroma);
    // Wrong colors bring luma nearer together, too; blended fields are so in all planes alike.
    const bool partly = luma && look == Look::kBlended && luma->apart > kAlike;
    if (partly && chroma && std::abs(luma->apart - chroma->apart) > 0.15) look = Look::kClear;
    // Chroma counts more, except if luma is just what exchanged fields have: then chroma's own planes may be
    // exchanged, too, which can look as if nothing was.
    const bool isExchanged = luma && std::abs(luma->apart + 1) < 0.1;
    if (chroma && !isExchanged && LookOf(*chroma) == Look::kClear) look = Look::kClear;
    // What makes a field of the other one's rows may leave them as far from these as is hardly seen, which is
    // much of a small difference of luma.
    const bool isMade = luma && chroma && luma->apart < kWhole && IsOneField(LookOf(*chroma));
    if (isMade) look = LookOf(*chroma);
    Note(mSeen[static_cast<std::size_t>(look)], reading);
    AddLook(look);
    if (isMade) return {MixtureOf(*luma), MixtureOf(*chroma)};
    FieldShares shares{SharesOf(luma ? *luma : *chroma), SharesOf(chroma ? *chroma : *luma)};
    if (look == Look::kClear) shares.luma = {1, 0};
    if (!luma || !chroma) return shares;
    ++mChromaLooked;
    if (look == Look::kClear && MixesChroma(*chroma))
        Note(mChromaMixed, reading);
    else
        shares.chroma = shares.luma;
    return shares;
}

void FieldAnalysis::AddLook(Look look) {
    if (IsOneField(look) && IsOneField(mLast) && look != mLast) ++mAlternations;
    mLast = look;
}

void FieldAnalysis::AddNumbers(const FrameReading& reading, FieldOrder order) {
    if (!reading.frame[0] || !reading.frame[1]) return;
    ++mNumbered;
    const double even = *reading.frame[0], odd = *reading.frame[1];
    if (odd - even > kAnotherFrame) Note(mLater, reading);
    if (even - odd > kAnotherFrame) Note(mEarlier, reading);
    const bool told = order == FieldOrder::kUpperFirst || order == FieldOrder::kLowerFirst;
    const bool lowerFirst = (told ? order : mClip.order) == FieldOrder::kLowerFirst;
    mCadence.Add(std::llround(lowerFirst ? odd : even));
    mCadence.Add(std::llround(lowerFirst ? even : odd));
}

// Wrong colors move what is measured, too, so that it is believed only if fields are mixed.
std::array<double, 2> FieldAnalysis::SharesOf(const Measured& measured) {
    switch (LookOf(measured)) {
    case Look::kClear: return {1, 0};
    case Look::kSwapped: return {0, 1};
    case Look::kUpperOnly: return {1, 1};
    case Look::kLowerOnly: return {0, 0};
    case Look::kUnclear: return {1, 0};
    default: return MixtureOf(measured);
    }
}

std::array<double, 2> FieldAnalysis::MixtureOf(const Measured& measured) {
    return {measured.middle + measured.apart / 2.0, measured.middle - measured.apart / 2.0};
}

} // namespace corvane
