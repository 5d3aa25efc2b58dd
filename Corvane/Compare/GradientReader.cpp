#include "GradientReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kRows = 24;       // of a picture that are looked at
constexpr double kMostError = 2.5;      // steps of 8 bits, of colors as they should be
constexpr std::int64_t kLearnFrom = 24; // pictures
constexpr std::int64_t kGuessFrom = 4;  // pictures
constexpr std::int64_t kMostGuessed = 400;

std::size_t RowAt(std::size_t i, std::size_t height) {
    return (2 * i + 1) * height / (2 * kRows);
}

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

} // namespace

GradientReader::GradientReader(const std::vector<KeyFrame>& keys, int bits, ColorChanges changes)
    : mChanges(std::move(changes)), mStep(std::ldexp(1.0, bits - 8)) {
    mChanges.coding.bits = 8;
    for (const KeyFrame& key : keys) {
        Rows rows(kRows);
        for (std::size_t i = 0; i < kRows; ++i)
            for (std::size_t plane = 0; plane < 3; ++plane)
                if (const auto& from = key.rows[plane]; !from.empty())
                    rows[i][plane] = from[RowAt(i, from.size())] / mStep;
        mKeys.push_back({key.frame, std::move(rows)});
        if (key.colors.empty()) continue;
        std::vector<Color>& colors = mColors.emplace_back();
        for (std::size_t i = 0; i < kRows; ++i) colors.push_back(key.colors[RowAt(i, key.colors.size())]);
    }
}

std::optional<double> GradientReader::Resolution() const {
    double moved = 0;
    for (std::size_t i = 0; i < kRows; ++i)
        for (std::size_t plane = 0; plane < 3; ++plane)
            moved = std::max(moved, std::abs(mKeys.back().rows[i][plane] - mKeys.front().rows[i][plane]));
    if (moved < 1) return {};
    const auto frames = static_cast<double>(mKeys.back().frame - mKeys.front().frame);
    return std::max(0.5 * frames / moved, 1.0);
}

// The place on the way from key to key that is nearest to the colors seen.
GradientReader::Fit GradientReader::FitFrame(const std::vector<Key>& keys, const Rows& seen) {
    Fit best;
    double least = -1;
    for (std::size_t at = 0; at + 1 < keys.size(); ++at) {
        const Key& from = keys[at];
        const Key& to = keys[at + 1];
        double along = 0, way = 0;
        for (std::size_t i = 0; i < kRows; ++i) {
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const double step = to.rows[i][plane] - from.rows[i][plane];
                along += (seen[i][plane] - from.rows[i][plane]) * step;
                way += step * step;
            }
        }
        // A reading may lie a little outside the clip by its error.
        const double begin = at == 0 ? -1.0 / static_cast<double>(to.frame - from.frame) : 0;
        const double end = at + 2 == keys.size() ? 1 - begin : 1;
        const double share = way == 0 ? 0 : std::clamp(along / way, std::min(begin, 0.0), end);
        double error = 0;
        for (std::size_t i = 0; i < kRows; ++i) {
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const double expected =
                    from.rows[i][plane] + (to.rows[i][plane] - from.rows[i][plane]) * share;
                error += (seen[i][plane] - expected) * (seen[i][plane] - expected);
            }
        }
        if (least >= 0 && error >= least) continue;
        least = error;
        const auto frames = static_cast<double>(to.frame - from.frame);
        best.frame = static_cast<double>(from.frame) + share * frames;
        best.motion = std::sqrt(way / (3 * kRows)) / frames;
    }
    best.error = std::sqrt(least / (3 * kRows));
    return best;
}

GradientReader::Rows GradientReader::Expected(double frame) const {
    std::size_t at = 0;
    while (at + 2 < mKeys.size() && frame > static_cast<double>(mKeys[at + 1].frame)) ++at;
    const Key& from = mKeys[at];
    const Key& to = mKeys[at + 1];
    const double share =
        (frame - static_cast<double>(from.frame)) / static_cast<double>(to.frame - from.frame);
    Rows rows(kRows);
    for (std::size_t i = 0; i < kRows; ++i)
        for (std::size_t plane = 0; plane < 3; ++plane)
            rows[i][plane] = from.rows[i][plane] + (to.rows[i][plane] - from.rows[i][plane]) * share;
    return rows;
}

void GradientReader::MakeGuesses() {
    mGuesses = {{mKeys, false}, {mKeys, true}};
    if (mColors.size() != mKeys.size()) return;
    for (const auto& change : mChanges.changes) {
        std::vector<Key> keys = mKeys;
        for (std::size_t at = 0; at < keys.size(); ++at) {
            for (std::size_t i = 0; i < kRows; ++i) {
                const Codes codes = Encode(change(mColors[at][i]), mChanges.coding);
                for (std::size_t plane = 0; plane < 3; ++plane)
                    keys[at].rows[i][plane] = std::clamp(codes[plane], 0.0, 255.0);
            }
        }
        mGuesses.push_back({keys, false});
        mGuesses.push_back({std::move(keys), true});
    }
}

// Takes what explains the last few pictures best, if it does so well.
bool GradientReader::TakesGuess(const Rows& seen) {
    if (mGuessed >= kMostGuessed) return false;
    if (mGuesses.empty()) MakeGuesses();
    const Rows flipped(seen.rbegin(), seen.rend());
    for (Guess& guess : mGuesses) {
        const double error = FitFrame(guess.keys, guess.flipped ? flipped : seen).error;
        guess.squares += error * error;
    }
    if (++mGuessed % kGuessFrom != 0) return false;
    Guess& best = *std::ranges::min_element(mGuesses, {}, &Guess::squares);
    const bool explains = std::sqrt(best.squares / kGuessFrom) <= kMostError;
    if (explains) {
        mKeys = std::move(best.keys);
        mIsFlipped = best.flipped;
    }
    if (explains || mGuessed >= kMostGuessed) mGuesses = {};
    for (Guess& guess : mGuesses) guess.squares = 0;
    return explains;
}

// Takes pictures for the first frames, and tries whether one map explains them: then that is what keys
// become.
void GradientReader::Learn(const Rows& seen) {
    if (mKeys.front().frame + mLearned > mKeys.back().frame) return;
    const Rows expected = Expected(static_cast<double>(mKeys.front().frame + mLearned));
    ++mLearned;
    for (std::size_t i = 0; i < kRows; ++i) {
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
    if (std::sqrt(std::max(error, 0.0) / mNormal.count) > kMostError) return;
    for (Key& key : mKeys) {
        for (Triple& row : key.rows) {
            const Triple before = row;
            for (std::size_t plane = 0; plane < 3; ++plane)
                row[plane] = before[0] * map[0][plane] + before[1] * map[1][plane] +
                             before[2] * map[2][plane] + map[3][plane];
        }
    }
    mIsMapped = true;
}

void GradientReader::Read(const PictureRows& rows, FrameReading& reading) {
    reading.frame = {};
    reading.certainty = reading.margin = 0;
    if (!Resolution()) return;
    Rows seen(kRows);
    for (std::size_t i = 0; i < kRows; ++i)
        for (std::size_t plane = 0; plane < 3; ++plane)
            if (const auto& from = rows.plane[plane]; !from.empty())
                seen[i][plane] = from[RowAt(i, from.size())].mean / mStep;
    if (mIsFlipped) std::ranges::reverse(seen);
    const Fit fit = FitFrame(mKeys, seen);
    const bool isAlike = fit.error <= std::max(kMostError, 4 * mUsualError);
    if (!isAlike && !mIsSure && !mIsMapped) {
        if (TakesGuess(seen)) {
            mIsSure = true;
            return Read(rows, reading);
        }
        Learn(seen);
    }
    if (!isAlike || fit.motion <= 0) return;
    // The worst of the last few hundred pictures counts, as one picture's error may be small by chance.
    mUsualError = std::max(fit.error, mUsualError + (fit.error - mUsualError) / 200);
    mIsSure = true;
    // Measured on gradients that x264, x265, MPEG-2 and ProRes coded: the coarser the coding, the more
    // pictures lag behind their colors as one.
    reading.margin = mUsualError * (0.5 + 0.2 * mUsualError) / fit.motion;
    if (mIsMapped) reading.margin *= 1.5;
    reading.certainty = 1 / (1 + reading.margin);
    reading.frame = {fit.frame, fit.frame};
}

} // namespace corvane
