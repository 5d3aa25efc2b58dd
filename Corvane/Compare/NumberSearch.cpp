#include "NumberSearch.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "PlacedNumber.h"

namespace corvane {
namespace {

// Something that stands out from its rows, in samples of a plane.
struct Mark {
    double left, top, right, bottom;
};

// How far samples of a plane are off the usual one of their row.
class Relief {
  public:
    explicit Relief(const PlaneView& view)
        : mStepX(std::max(view.width / 400, 1U)), mStepY(std::max(view.height / 300, 1U) | 1),
          mColumns(view.width / mStepX), mRows(view.height / mStepY),
          mHeights(std::size_t{mColumns} * mRows) {
        std::vector<float> some;
        for (std::uint32_t row = 0; row < mRows; ++row) {
            some.clear();
            for (std::uint32_t i = 0; i < 63; ++i)
                some.push_back(view.At(
                    static_cast<std::uint32_t>(std::uint64_t{view.width} * (2 * i + 1) / 126), row * mStepY));
            std::ranges::nth_element(some, some.begin() + 31);
            for (std::uint32_t column = 0; column < mColumns; ++column)
                mHeights[std::size_t{row} * mColumns + column] =
                    std::abs(view.At(column * mStepX, row * mStepY) - some[31]);
        }
    }

    double Step() const { return std::max(mStepX, mStepY); }

    // What nothing but a few samples are above.
    float Peak() const {
        std::vector<float> sorted = mHeights;
        if (sorted.empty()) return 0;
        const auto at = sorted.end() - static_cast<std::ptrdiff_t>(sorted.size() / 500) - 1;
        std::ranges::nth_element(sorted, at);
        return *at;
    }

    // The smallest rectangle around what is higher than `height`, bars at the sides apart.
    std::optional<Mark> Find(float height) const {
        std::vector<std::uint32_t> columns(mColumns);
        for (std::size_t i = 0; i < mHeights.size(); ++i)
            if (mHeights[i] > height) ++columns[i % mColumns];
        std::uint32_t left = 0;
        std::uint32_t right = mColumns;
        const auto isBar = [&](std::uint32_t column) { return columns[column] > mRows * 7 / 10; };
        while (left < right && isBar(left)) ++left;
        while (left < right && isBar(right - 1)) --right;
        const auto isIn = [&](std::uint32_t column) { return columns[column] >= std::max(mRows / 50, 2U); };
        while (left < right && !isIn(left)) ++left;
        while (left < right && !isIn(right - 1)) --right;
        std::uint32_t top = mRows;
        std::uint32_t bottom = 0;
        for (std::uint32_t row = 0; row < mRows; ++row) {
            const auto* start = &mHeights[std::size_t{row} * mColumns];
            if (std::count_if(start + left, start + right, [&](float h) { return h > height; }) < 2) continue;
            top = std::min(top, row);
            bottom = row + 1;
        }
        if (left >= right || top >= bottom) return {};
        const auto at = [](std::uint32_t sample, std::uint32_t step) {
            return static_cast<double>(sample * step);
        };
        return Mark{at(left, mStepX), at(top, mStepY), at(right, mStepX), at(bottom, mStepY)};
    }

  private:
    std::uint32_t mStepX, mStepY;
    std::uint32_t mColumns, mRows;
    std::vector<float> mHeights;
};

// Adds the places at which a print of any length would cover a mark, as its box or as its characters.
void AddGuesses(Size frame, const Mark& mark, double step, const Orientation& orientation,
                std::vector<NumberGuess>& guesses) {
    for (std::size_t count = 1; count <= 10; ++count) {
        const raster::PrintLayout layout = FrameNumberLayout(frame, count);
        raster::Rectangle ink = layout.glyphs;
        ink.right = std::min(ink.right, layout.box.right - (layout.glyphs.left - layout.box.left));
        for (const raster::Rectangle& part : {layout.box, ink}) {
            NumberPlace place{.orientation = orientation};
            place.scaleX = (mark.right - mark.left) / static_cast<double>(part.right - part.left);
            place.scaleY = (mark.bottom - mark.top) / static_cast<double>(part.bottom - part.top);
            place.left = mark.left - static_cast<double>(part.left) * place.scaleX;
            place.top = mark.top - static_cast<double>(part.top) * place.scaleY;
            const double shape = place.scaleX / place.scaleY;
            if (shape > 0.4 && shape < 2.5) guesses.push_back({.place = place, .step = step});
        }
    }
}

// The same mark in a plane that was turned back otherwise.
Mark Flipped(Mark mark, const PlaneView& view, bool mirrored, bool flipped) {
    if (mirrored) mark = {view.width - mark.right, mark.top, view.width - mark.left, mark.bottom};
    if (flipped) mark = {mark.left, view.height - mark.bottom, mark.right, view.height - mark.top};
    return mark;
}

// Guesses for a picture that lies as it is or on its side, mirrored and flipped in every way.
void GuessAll(Size frame, const PlaneView& plane, int turns, std::vector<NumberGuess>& guesses) {
    const PlaneView view = TurnBack(plane, {.quarterTurns = turns});
    const Relief relief(view);
    const float peak = relief.Peak();
    if (peak < 0.06f) return;
    std::optional<Mark> before;
    for (const float share : {0.2f, 0.55f}) {
        const auto mark = relief.Find(peak * share);
        if (!mark || mark->bottom - mark->top < 4 || mark->right - mark->left < 3) continue;
        if (before && before->left == mark->left && before->right == mark->right &&
            before->top == mark->top && before->bottom == mark->bottom)
            continue;
        before = mark;
        for (const bool mirrored : {false, true}) {
            for (const bool flipped : {false, true}) {
                Orientation orientation{mirrored, flipped, turns};
                if (mirrored && flipped) orientation = {false, false, turns + 2};
                AddGuesses(frame, Flipped(*mark, view, mirrored, flipped), relief.Step(), orientation,
                           guesses);
            }
        }
    }
}

// How much of the frame a picture would show.
double ShareInside(Size frame, const NumberPlace& place, const PlaneView& view) {
    const auto share = [](double begin, double length, std::uint32_t size) {
        return std::max(std::min(begin + length, static_cast<double>(size)) - std::max(begin, 0.0), 0.0) /
               length;
    };
    return share(place.left, place.scaleX * frame.width, view.width) *
           share(place.top, place.scaleY * frame.height, view.height);
}

} // namespace

std::vector<NumberGuess> SearchNumber(Size frame, const PlaneView& plane, const Box& active) {
    constexpr std::size_t kMost = 12;
    std::vector<NumberGuess> guesses;
    const PlaneView part = Cut(plane, active);
    GuessAll(frame, part, 0, guesses);
    GuessAll(frame, part, 1, guesses);
    for (NumberGuess& guess : guesses) {
        const PlaneView view = TurnBack(plane, guess.place.orientation);
        const auto [x, y] = CornerOf(active, plane, guess.place.orientation);
        guess.place.left += x;
        guess.place.top += y;
        guess.fit = PlacedNumber(frame, guess.place, view).FirstFit(view);
        // Numbers like 0 look alike when they are turned, and 6 becomes 9: if there is little between them,
        // that comes first of which the picture shows most of the frame, and then what lies as it should.
        guess.fit *= 0.9 + 0.1 * ShareInside(frame, guess.place, view);
        if (!guess.place.orientation.IsPlain()) guess.fit *= 0.98;
    }
    std::ranges::stable_sort(guesses, std::greater<>(), &NumberGuess::fit);
    if (guesses.size() > kMost) guesses.resize(kMost);
    std::erase_if(guesses, [](const NumberGuess& guess) { return guess.fit < 0.5; });
    return guesses;
}

} // namespace corvane
