#include "GradientSearch.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvane {
namespace {

// How much better an explanation must be than another one that is as likely.
constexpr double kClearly = 0.7;
// How much better one with free parameters must be than one that has none.
constexpr double kFarBetter = 0.5;
// What is off if nothing is wrong and the coding is fair, in steps of 8 bits.
constexpr double kBeyondDoubt = 1.2;
// Lines that frames may be moved by if none are missing, as a part of them all.
constexpr double kMostMoved = 0.125;
// Lines that are left at least if the rest was cut off and what is left was scaled.
constexpr double kLeastLeft = 0.25;

template <class Rated>
Rated Better(Rated a, Rated b) {
    return b.error < a.error ? std::move(b) : std::move(a);
}

} // namespace

GradientSearch::Rated GradientSearch::Rate(const Task& task, GradientGuess guess) const {
    const std::vector<GradientKey> keys = mKeys.In(task.rows, guess);
    double squares = 0;
    for (const GradientRows& seen : task.pictures) squares += std::pow(FitFrame(keys, seen).error, 2);
    return {std::move(guess), std::sqrt(squares / static_cast<double>(task.pictures.size()))};
}

/// The whole frame fills the rows.
GradientSearch::Rated GradientSearch::Whole(const Task& task, const GradientGuess& guess) const {
    GradientGuess whole = guess;
    whole.axis = {double(task.rows.top), task.rows.height / static_cast<double>(mKeys.Height())};
    return Rate(task, std::move(whole));
}

/// The frame isn't scaled, and lines at its ends are cut off or free.
GradientSearch::Rated GradientSearch::Moved(const Task& task, const GradientGuess& guess) const {
    const double spare = task.rows.height - static_cast<double>(mKeys.Height());
    const double room = std::floor(static_cast<double>(mKeys.Height()) * kMostMoved);
    const double least = spare == 0 ? -room : std::min(spare, 0.0);
    const double most = spare == 0 ? room : std::max(spare, 0.0);
    const auto rate = [&](double lines) {
        GradientGuess moved = guess;
        moved.axis = {task.rows.top + lines, 1};
        return Rate(task, std::move(moved));
    };
    double step = std::ceil((most - least) / 24), at = least;
    Rated best = rate(least);
    for (double lines = least + step; lines <= most; lines += step)
        if (Rated next = rate(lines); next.error < best.error) {
            best = std::move(next);
            at = lines;
        }
    while (step > 1) {
        step = std::ceil(step / 2);
        for (const double lines : {at - step, at + step}) {
            if (lines < least || lines > most) continue;
            Rated next = rate(lines);
            if (next.error >= best.error) continue;
            best = std::move(next);
            at = lines;
        }
    }
    return best;
}

/// Lines at both ends are cut off, and what is left is scaled to fill the rows.
GradientSearch::Rated GradientSearch::Zoomed(const Task& task, const GradientGuess& guess) const {
    const auto height = static_cast<double>(mKeys.Height());
    const auto rate = [&](double top, double bottom) {
        if (top < 0 || bottom < 0 || height - top - bottom < height * kLeastLeft) return Rated{};
        GradientGuess zoomed = guess;
        const double scale = task.rows.height / (height - top - bottom);
        zoomed.axis = {task.rows.top - top * scale, scale};
        return Rate(task, std::move(zoomed));
    };
    double step = std::ceil(height / 16), top = 0, bottom = 0;
    Rated best = rate(0, 0);
    const auto attempt = [&](double newTop, double newBottom) {
        Rated next = rate(newTop, newBottom);
        if (next.error >= best.error) return;
        best = std::move(next);
        top = newTop;
        bottom = newBottom;
    };
    for (double a = 0; a < height; a += step)
        for (double b = 0; a + b < height; b += step) attempt(a, b);
    while (step > 1) {
        step = std::ceil(step / 2);
        const double midTop = top, midBottom = bottom;
        for (const double a : {-step, 0.0, step})
            for (const double b : {-step, 0.0, step}) attempt(midTop + a, midBottom + b);
    }
    return best;
}

/// Moved or scaled, upside down or not, with the colors that frames have.
GradientSearch::Rated GradientSearch::Shaped(const Task& task) const {
    Rated whole, moved, zoomed;
    for (const bool flipped : {false, true}) {
        whole = Better(std::move(whole), Whole(task, {{}, flipped}));
        moved = Better(std::move(moved), Moved(task, {{}, flipped}));
    }
    const double needed = mChanges.looksCropped ? 1 / kClearly : kClearly;
    if (whole.Explains() && !(moved.error < needed * whole.error)) return whole;
    if (moved.Explains()) return moved;
    for (const bool flipped : {false, true}) zoomed = Better(std::move(zoomed), Zoomed(task, {{}, flipped}));
    return zoomed;
}

/// Other colors, and upside down or not; and cropped if frames may be.
GradientSearch::Rated GradientSearch::Colored(const Task& task, bool cropped) const {
    Rated best;
    if (!mKeys.HasColors()) return best;
    for (const bool flipped : {false, true})
        for (const auto& change : mChanges.colors) {
            best = Better(std::move(best), Whole(task, {{}, flipped, change}));
            if (cropped) best = Better(std::move(best), Moved(task, {{}, flipped, change}));
        }
    return best;
}

std::optional<GradientGuess>
GradientSearch::Find(const RowRange& rows, const std::vector<GradientRows>& pictures, Care care) const {
    const Task task{rows, pictures};
    const bool isOfSize = rows.height == mKeys.Height();
    if (isOfSize)
        for (const bool flipped : {false, true})
            if (Rated whole = Whole(task, {{}, flipped}); whole.Explains()) return whole.guess;
    const bool isThorough = care == Care::kThorough;
    const Rated shaped = isThorough || !isOfSize ? Shaped(task) : Rated{};
    if (care == Care::kBeyondDoubt)
        return shaped.error <= kBeyondDoubt ? std::optional(shaped.guess) : std::nullopt;
    // Frames of another height lost lines or were scaled, so that wrong colors would be a second fault. In
    // frames of the right height they are the simpler explanation.
    if (!isOfSize && shaped.error <= kBeyondDoubt) return shaped.guess;
    const Rated colored = Colored(task, isThorough && !isOfSize);
    const double limit = isOfSize ? shaped.error / kFarBetter : shaped.error * kFarBetter;
    if (colored.Explains() && colored.error < limit) return colored.guess;
    if (shaped.Explains()) return shaped.guess;
    return std::nullopt;
}

} // namespace corvane
