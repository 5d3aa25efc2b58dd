#include "GradientReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvane {
namespace {

constexpr std::int64_t kLearnFrom = 24; // pictures
constexpr std::size_t kGuessFrom = 4;   // pictures
constexpr std::size_t kMeasureBy = 16;  // pictures
constexpr std::int64_t kMostGuessed = 400;
constexpr std::int64_t kThoroughly = 8; // pictures
constexpr double kNoFit = 1e9;
// In steps of 8 bits: what samples of a row may differ by, beyond what codecs make them, and what is no
// gradient at all.
constexpr double kRough = 12;
constexpr double kFlat = 2;
constexpr double kSteep = 10;

// Solves a * x = b for each column of b, by elimination; the map that changes nothing if there is no
// solution.
std::array<std::array<double, 3>, 4> Solve(std::array<std::array<double, 4>, 4> a,
                                           std::array<std::array<double, 3>, 4> b) {
    for (std::size_t i = 0; i < 4; ++i) {
        std::size_t pivot = i;
        for (std::size_t row = i + 1; row < 4; ++row)
            if (std::abs(a[row][i]) > std::abs(a[pivot][i])) pivot = row;
        std::swap(a[i], a[pivot]);
        std::swap(b[i], b[pivot]);
        for (std::size_t row = 0; row < 4; ++row) {
            if (row == i || a[i][i] == 0) continue;
            const double factor = a[row][i] / a[i][i];
            for (std::size_t column = i; column < 4; ++column) a[row][column] -= factor * a[i][column];
            for (std::size_t column = 0; column < 3; ++column) b[row][column] -= factor * b[i][column];
        }
    }
    for (std::size_t i = 0; i < 4; ++i)
        for (double& value : b[i]) value = a[i][i] == 0 ? 0 : value / a[i][i];
    return b;
}

// By how much a plane changes from row to row, the one that does so most.
double ContrastOf(const GradientRows& rows) {
    double most = 0;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const auto [least, greatest] =
            std::ranges::minmax(rows, {}, [plane](const std::array<double, 3>& row) { return row[plane]; });
        most = std::max(most, greatest[plane] - least[plane]);
    }
    return most;
}

// How much samples of a row differ, in code values: luma or nearest to it.
double TextureOf(const PictureRows& rows) {
    const auto& samples = rows.plane[rows.format.yCbCr ? 0 : 1];
    double variance = 0;
    for (const RowSamples& row : samples) variance += double{row.variance};
    return std::sqrt(variance / static_cast<double>(samples.size()));
}

} // namespace

GradientReader::GradientReader(std::vector<KeyFrame> keys, int bits, const SampleCoding& coding,
                               GradientChanges changes)
    : mSearch(GradientKeys(std::move(keys), bits, coding), std::move(changes)),
      mStep(std::ldexp(1.0, bits - 8)) {
    Place({0, static_cast<std::uint32_t>(mSearch.Keys().Height())});
    mContrast = 255;
    for (const GradientKey& key : mKeys) mContrast = std::min(mContrast, ContrastOf(key.rows));
    double moved = 0;
    for (std::size_t i = 0; i < GradientKeys::kRows; ++i)
        for (std::size_t plane = 0; plane < 3; ++plane)
            moved = std::max(moved, std::abs(mKeys.back().rows[i][plane] - mKeys.front().rows[i][plane]));
    const auto frames = static_cast<double>(mKeys.back().frame - mKeys.front().frame);
    if (moved >= 1) mResolution = std::max(0.5 * frames / moved, 1.0);
}

/// Takes rows for the whole frame until something else is known of them.
void GradientReader::Place(const RowRange& range) {
    mRange = range;
    mAxis.reset();
    mShaped.clear();
    mUnexplained.clear();
    GradientGuess whole = mGuess;
    whole.axis = {double(range.top), range.height / static_cast<double>(mSearch.Keys().Height())};
    Take(whole);
}

void GradientReader::Take(const GradientGuess& guess) {
    mGuess = guess;
    mKeys = mSearch.Keys().In(mRange, guess);
    mOtherKeys.clear();
    mIsMapped = false;
}

/// Looks at the first pictures of another height than the clip's, and returns whether it is clear why it is
/// another. What one picture tells beyond doubt is made better by a few more, and by many.
bool GradientReader::LooksForAxis(const GradientRows& seen) {
    if (mRange.height == mSearch.Keys().Height() || mShaped.size() >= kMeasureBy) return true;
    mShaped.push_back(seen);
    const std::size_t count = mShaped.size();
    if (count == 1 || count == kGuessFrom || count == kMeasureBy) {
        if (const auto guess =
                mSearch.Find(mRange, mShaped, count > 1 ? Care::kThorough : Care::kBeyondDoubt)) {
            // Frames that were read differently would seem to be missing or repeated.
            if (count < kMeasureBy) Take(*guess);
            mAxis = guess->axis;
        }
    }
    return mAxis || count >= kGuessFrom;
}

/// What explains the last few pictures best, if it does so well.
std::optional<GradientGuess> GradientReader::Guess(const GradientRows& seen, Care care) {
    if (mGuessed >= kMostGuessed) return std::nullopt;
    mUnexplained.push_back(seen);
    ++mGuessed;
    if (mUnexplained.size() < kGuessFrom) return std::nullopt;
    auto guess = mSearch.Find(mRange, mUnexplained, care);
    mUnexplained.clear();
    return guess;
}

/// Takes what explains the last few pictures for what happened to all of them.
bool GradientReader::TakesGuess(const GradientRows& seen) {
    const auto guess = Guess(seen, mGuessed < kThoroughly ? Care::kThorough : Care::kQuick);
    if (!guess) return false;
    const bool isWhole = guess->axis == mGuess.axis;
    Take(*guess);
    if (!isWhole) mAxis = guess->axis;
    return true;
}

/// The frame that rows show if something happened to the colors of some pictures, though not to those before.
GradientFit GradientReader::FitOther(const GradientRows& seen) {
    if (mOtherKeys.empty()) {
        const auto guess = Guess(seen, Care::kQuick);
        if (!guess || !guess->change || guess->flipped != mGuess.flipped || !(guess->axis == mGuess.axis))
            return {.error = kNoFit};
        mOtherKeys = mSearch.Keys().In(mRange, *guess);
    }
    return FitFrame(mOtherKeys, seen);
}

/// Whether rows that aren't those of any frame are of several colors each, or all alike: no fault of colors
/// does that to a gradient.
bool GradientReader::IsForeign(double texture, const GradientRows& seen) const {
    if (texture > (mIsSure ? kRough + 2 * mUsualTexture : 2 * kRough)) return true;
    return mContrast > kSteep && ContrastOf(seen) < kFlat;
}

GradientRows GradientReader::Expected(double frame) const {
    std::size_t at = 0;
    while (at + 2 < mKeys.size() && frame > static_cast<double>(mKeys[at + 1].frame)) ++at;
    const GradientKey& from = mKeys[at];
    const GradientKey& to = mKeys[at + 1];
    const double share =
        (frame - static_cast<double>(from.frame)) / static_cast<double>(to.frame - from.frame);
    GradientRows rows(GradientKeys::kRows);
    for (std::size_t i = 0; i < GradientKeys::kRows; ++i)
        for (std::size_t plane = 0; plane < 3; ++plane)
            rows[i][plane] = from.rows[i][plane] + (to.rows[i][plane] - from.rows[i][plane]) * share;
    return rows;
}

// Takes pictures for the first frames, and tries whether one map explains them: then that is what keys
// become.
void GradientReader::Learn(const GradientRows& seen) {
    if (mKeys.front().frame + mLearned > mKeys.back().frame) return;
    const GradientRows expected = Expected(static_cast<double>(mKeys.front().frame + mLearned));
    ++mLearned;
    for (std::size_t i = 0; i < GradientKeys::kRows; ++i) {
        const std::array<double, 4> from{expected[i][0], expected[i][1], expected[i][2], 1};
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t column = 0; column < 4; ++column)
                mNormal.expected[row][column] += from[row] * from[column];
            for (std::size_t plane = 0; plane < 3; ++plane)
                mNormal.seen[row][plane] += from[row] * seen[i][plane];
        }
        for (const double value : seen[i]) mNormal.squares += value * value;
        mNormal.count += 3;
    }
    const std::int64_t frames = mKeys.back().frame - mKeys.front().frame;
    if (mLearned >= std::clamp<std::int64_t>(frames / 2, 4, kLearnFrom)) MapKeys();
}

/// Sends the keys' colors through the map that was learned, if it explains what was seen.
void GradientReader::MapKeys() {
    // Colors that lie on a plane leave a part of the map open: what is open is held to no change.
    constexpr double kHold = 1e-3;
    auto matrix = mNormal.expected;
    auto target = mNormal.seen;
    for (std::size_t i = 0; i < 4; ++i) {
        matrix[i][i] += kHold;
        if (i < 3) target[i][i] += kHold;
    }
    const auto map = Solve(matrix, target);
    double error = mNormal.squares;
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t plane = 0; plane < 3; ++plane) {
            error -= 2 * map[row][plane] * mNormal.seen[row][plane];
            for (std::size_t column = 0; column < 4; ++column)
                error += map[row][plane] * map[column][plane] * mNormal.expected[row][column];
        }
    if (std::sqrt(std::max(error, 0.0) / mNormal.count) > kMostGradientError) return;
    for (GradientKey& key : mKeys) {
        for (std::array<double, 3>& row : key.rows) {
            const std::array<double, 3> before = row;
            for (std::size_t plane = 0; plane < 3; ++plane)
                row[plane] = before[0] * map[0][plane] + before[1] * map[1][plane] +
                             before[2] * map[2][plane] + map[3][plane];
        }
    }
    mIsMapped = true;
}

// By how many frames a reading may be off.
double GradientReader::MarginOf(const GradientFit& fit) const {
    // Measured on gradients that x264, x265, MPEG-2 and ProRes coded: the coarser the coding, the more
    // pictures lag behind their colors as one. Beyond some coarseness encoders, VP8's above all, leave colors
    // that move slowly as they are for several frames.
    constexpr double kCoarse = 0.5;
    const double lag = mUsualError * (0.5 + 0.2 * mUsualError) + 1.2 * std::max(mUsualError - kCoarse, 0.0);
    // What was learned from colors themselves, a map of them or where rows lie, is off by something, too.
    return lag / fit.motion * (mIsMapped ? 1.5 : 1.0) * (mAxis ? 3.0 : 1.0);
}

void GradientReader::Read(const PictureRows& rows, std::uint32_t top, FrameReading& reading) {
    reading.frame = {};
    reading.certainty = reading.margin = 0;
    if (!mResolution) return;
    const RowRange range{top, static_cast<std::uint32_t>(rows.plane[0].size())};
    if (range != mRange) Place(range);
    const GradientRows seen = mSearch.Keys().Seen(rows);
    const double texture = TextureOf(rows) / mStep;
    if (!mIsSure && IsForeign(texture, seen)) {
        reading.foreign = true;
        return;
    }
    if (!LooksForAxis(seen)) return;
    GradientFit fit = FitFrame(mKeys, seen);
    const auto isAlike = [&] { return fit.error <= std::max(kMostGradientError, 4 * mUsualError); };
    if (!isAlike()) reading.foreign = IsForeign(texture, seen);
    if (!isAlike() && !reading.foreign && !mIsMapped) {
        if (mIsSure) {
            fit = FitOther(seen);
        } else {
            if (TakesGuess(seen)) {
                mIsSure = true;
                return Read(rows, top, reading);
            }
            Learn(seen);
        }
    }
    reading.miscolored = mIsSure && !isAlike() && !reading.foreign;
    if (!isAlike() || fit.motion <= 0) return;
    // The worst of the last few hundred pictures counts, as one picture's error may be small by chance.
    const auto keep = [](double& usual, double now) { usual = std::max(now, usual + (now - usual) / 200); };
    keep(mUsualError, fit.error);
    keep(mUsualTexture, texture);
    mIsSure = true;
    reading.margin = MarginOf(fit);
    reading.certainty = 1 / (1 + reading.margin);
    reading.frame = {fit.frame, fit.frame};
}

} // namespace corvane
