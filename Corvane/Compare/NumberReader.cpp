#include "NumberReader.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "NumberSearch.h"
#include "PlacedNumber.h"
#include "Placement.h"

namespace corvane {
namespace {

bool FoundSomething(const PlacedNumber::Numbers& numbers) {
    return std::ranges::any_of(numbers, [](const PrintedNumber& n) { return n.number || n.blended; });
}

// Which rows tell where a number lies: all if they show one number, else those of the field that is read
// best.
int RowsOfPlace(const PlacedNumber::Numbers& numbers) {
    if (numbers[0].number == numbers[1].number) return 2;
    return numbers[0].certainty >= numbers[1].certainty ? 0 : 1;
}

// The number that some rows show, the most certain one.
const PrintedNumber* Best(const PlacedNumber::Numbers& numbers) {
    const auto best = std::ranges::max_element(numbers, {}, &PrintedNumber::certainty);
    return best->number ? &*best : nullptr;
}

} // namespace

struct NumberReader::State {
    static constexpr int kRefinements = 12;

    Size frame{};
    Size picture{};
    std::unique_ptr<PlacedNumber> known; // where numbers were read
    std::unique_ptr<PlacedNumber> plain; // where they are if the frame fills the picture
    double sureness = 0;                 // how much print the known place was found by
    int refinements = 0;
    int failures = 0; // searches in a row that found nothing
    int rest = 0;     // pictures until the next search

    PlacedNumber::Numbers ReadIn(PlacedNumber& place, const PlaneView& plane) const {
        return place.Read(TurnBack(plane, place.Place().orientation));
    }
    std::unique_ptr<PlacedNumber> At(const NumberPlace& place, const PlaneView& plane) const {
        return std::make_unique<PlacedNumber>(frame, place, TurnBack(plane, place.orientation));
    }
    void Forget(const PlaneView& plane);
    void Refine(PlacedNumber& place, const PlacedNumber::Numbers& numbers, const PlaneView& plane,
                double step);
    PlacedNumber::Numbers Search(const VideoPicture& shown);
    PlacedNumber::Numbers Read(const VideoPicture& shown);
};

// A picture of another size has its numbers elsewhere.
void NumberReader::State::Forget(const PlaneView& plane) {
    picture = {plane.width, plane.height};
    known.reset();
    sureness = 0;
    refinements = failures = rest = 0;
    NumberPlace place;
    place.scaleX = static_cast<double>(plane.width) / frame.width;
    place.scaleY = static_cast<double>(plane.height) / frame.height;
    plain = At(place, plane);
}

// Keeps the place of a number that was read, brought nearer by what was read there: the more characters, the
// nearer.
void NumberReader::State::Refine(PlacedNumber& place, const PlacedNumber::Numbers& numbers,
                                 const PlaneView& plane, double step) {
    const PrintedNumber* best = Best(numbers);
    if (!best || (known && refinements >= kRefinements)) return;
    const double weight = static_cast<double>(std::to_string(*best->number).size()) * best->certainty;
    const int rows = RowsOfPlace(numbers);
    const PrintedNumber& told = numbers[static_cast<std::size_t>(rows)];
    NumberPlace refined = place.Refined(told.number.value_or(*best->number), rows, step);
    if (known && known->Place().orientation == refined.orientation) {
        const double share = weight / (sureness + weight);
        const auto mix = [&](double& now, double before) { now = before + (now - before) * share; };
        mix(refined.left, known->Place().left);
        mix(refined.top, known->Place().top);
        mix(refined.scaleX, known->Place().scaleX);
        mix(refined.scaleY, known->Place().scaleY);
    }
    sureness += weight;
    ++refinements;
    known = At(refined, plane);
}

PlacedNumber::Numbers NumberReader::State::Search(const VideoPicture& shown) {
    if (rest > 0) {
        --rest;
        return {};
    }
    const PlaneView plane = LumaOf(shown);
    for (const NumberGuess& guess : SearchNumber(frame, plane, FindActive(shown))) {
        auto place = At(guess.place, plane);
        PlacedNumber::Numbers numbers = ReadIn(*place, plane);
        const PrintedNumber* best = Best(numbers);
        // What was found elsewhere must be clearer if there is a place where numbers were before.
        if (!best || (known && best->certainty < 0.6)) continue;
        known.reset();
        sureness = 0;
        refinements = failures = 0;
        Refine(*place, numbers, plane, guess.step);
        numbers = ReadIn(*known, plane);
        if (Best(numbers)) return numbers;
        known.reset();
    }
    rest = std::min(failures++, 8);
    return {};
}

PlacedNumber::Numbers NumberReader::State::Read(const VideoPicture& shown) {
    const PlaneView plane = LumaOf(shown);
    if (picture != Size{plane.width, plane.height}) Forget(plane);
    for (PlacedNumber* place : {known.get(), plain.get()}) {
        if (!place) continue;
        const PlacedNumber::Numbers numbers = ReadIn(*place, plane);
        if (!FoundSomething(numbers)) continue;
        Refine(*place, numbers, plane, 1);
        return numbers;
    }
    return Search(shown);
}

NumberReader::NumberReader(Size frame) : mState(std::make_unique<State>()) {
    mState->frame = frame;
}

NumberReader::~NumberReader() = default;

NumberReading NumberReader::Read(const VideoPicture& picture) {
    const PlacedNumber::Numbers numbers = mState->Read(picture);
    NumberReading reading{.whole = numbers[2], .field = {numbers[0], numbers[1]}, .place = {}};
    const PrintedNumber* best = Best(numbers);
    if (!mState->known || !best) return reading;
    reading.place = mState->known->Place();
    reading.place->contrast = best->contrast;
    reading.place->dark = best->dark;
    const PlaneView view = TurnBack(LumaOf(picture), reading.place->orientation);
    if (view.CountsBackwards() && view.height % 2 == 0) std::swap(reading.field[0], reading.field[1]);
    return reading;
}

void NoteNumbers(const NumberReading& numbers, FrameReading& reading) {
    reading.certainty = 0;
    reading.margin = 0;
    for (std::size_t field = 0; field < 2; ++field) {
        const PrintedNumber& own = numbers.field[field];
        const PrintedNumber& other = numbers.field[1 - field];
        // If one field alone differs from the whole, the whole is a mixture of it and of one that can't be
        // read.
        const bool useWhole = !own.number && (!other.number || other.number == numbers.whole.number);
        const PrintedNumber& used = useWhole ? numbers.whole : own;
        reading.frame[field].reset();
        if (used.number) reading.frame[field] = static_cast<double>(*used.number);
        reading.certainty = field == 0 ? used.certainty : std::min(reading.certainty, used.certainty);
    }
    // A blend of two frames is either of them.
    const PrintedNumber& whole = numbers.whole;
    if (!whole.partsKnown || reading.frame[0] || reading.frame[1]) return;
    if (std::abs(whole.parts[0] - whole.parts[1]) != 1) return;
    reading.frame.fill(static_cast<double>(whole.parts[0] + whole.parts[1]) / 2);
    reading.margin = 0.5;
}

} // namespace corvane
