#include "PlacedNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace corvane {
namespace {

constexpr int kMostCharacters = 11; // of a 32-bit number
constexpr int kAllRows = 2;

// When a character is taken for read. Samples of coded pictures of readable size correlate by 0.9 and more.
constexpr double kLeastFit = 0.8;
constexpr double kLeastRows = 6; // of a character
constexpr double kLeastColumns = 4;
constexpr double kLeastContrast = 0.12; // of the range of samples; prints have 0.7 to 0.85
constexpr double kMostRoughness = 0.12; // of the contrast, of what is not printed on

// What the characters say, if that is how a number is written.
std::optional<std::int64_t> NumberOf(const std::vector<int>& glyphs) {
    std::string text;
    for (const int glyph : glyphs)
        text += glyph == raster::kMinusGlyph ? '-' : static_cast<char>('0' + glyph);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || std::to_string(number) != text) return {};
    return number;
}

// How much doubt a character may leave that is seen in so many rows: in few rows, noise looks like another
// one.
double MostDoubt(double rows) {
    return std::clamp(rows * 0.03, 0.22, 0.6);
}

bool IsBlended(const CellReading& cell) {
    const double left = 1 - cell.pairFit * cell.pairFit;
    return cell.pairFit >= 0.94 && left < 0.4 * (1 - cell.fit * cell.fit) && cell.weaker >= 0.15 &&
           cell.pairContrast >= kLeastContrast;
}

bool IsRead(const CellReading& cell, const CellReading& first, double rows) {
    return !IsBlended(cell) && cell.fit >= kLeastFit && cell.doubt <= MostDoubt(rows) &&
           cell.contrast >= kLeastContrast && cell.contrast > first.contrast * 0.6 &&
           cell.contrast < first.contrast * 1.6 && std::abs(cell.dark - first.dark) < first.contrast * 0.25;
}

// The two numbers of a blend: which of two characters belongs to which is told by the numbers being near each
// other, as frames that are blended are.
void TellApart(const std::vector<CellReading>& cells, const std::vector<bool>& isPair,
               PrintedNumber& result) {
    std::vector<std::size_t> pairs;
    for (std::size_t i = 0; i < cells.size(); ++i)
        if (isPair[i]) pairs.push_back(i);
    std::optional<std::int64_t> nearest;
    for (unsigned exchanged = 0; exchanged < 1U << (pairs.size() - 1); ++exchanged) {
        std::array<std::vector<int>, 2> glyphs;
        for (const CellReading& cell : cells)
            for (auto& some : glyphs) some.push_back(cell.glyph);
        for (std::size_t i = 0; i < pairs.size(); ++i)
            for (std::size_t side = 0; side < 2; ++side)
                glyphs[side][pairs[i]] = cells[pairs[i]].pair[side ^ (exchanged >> i & 1)];
        const auto a = NumberOf(glyphs[0]);
        const auto b = NumberOf(glyphs[1]);
        if (!a || !b || (nearest && std::abs(*a - *b) >= *nearest)) continue;
        nearest = std::abs(*a - *b);
        result.parts = {*a, *b};
        result.partsKnown = true;
    }
}

} // namespace

PlacedNumber::PlacedNumber(Size frame, const NumberPlace& place, const PlaneView& view)
    : mGrid{FrameNumberLayout(frame, 1), place}, mSize(view) {}

NumberCell* PlacedNumber::CellAt(int cell, const PlaneView& view) {
    const auto at = static_cast<std::size_t>(cell);
    if (at >= mCells.size()) {
        if (!NumberCell::IsInside(mGrid, cell, mSize)) return nullptr;
        mCells.push_back(std::make_unique<NumberCell>(mGrid, cell, mSize));
        mSampled.push_back(false);
    }
    if (!mSampled[at]) mCells[at]->Sample(view);
    mSampled[at] = true;
    return mCells[at].get();
}

// How much samples differ along rows between two columns of the first character's grid.
double PlacedNumber::Roughness(const PlaneView& view, double left, double right, int rows) const {
    constexpr int kSamples = 20;
    const double top = std::max(mGrid.YAt(0), 0.0);
    const double bottom = std::min(mGrid.YAt(raster::kGlyphHeight), static_cast<double>(view.height) - 2);
    const double begin = std::max(mGrid.place.left, 0.0); // beside the frame there may be bars
    const double width = mGrid.XAt(0, right) - mGrid.XAt(0, left);
    double rough = 0;
    int count = 0;
    for (int i = 0; i < kSamples; ++i) {
        auto y = static_cast<std::uint32_t>(top + (bottom - top) * (i + 0.5) / kSamples);
        y = rows == kAllRows ? y : y / 2 * 2 + static_cast<std::uint32_t>(rows);
        double sum = 0, squares = 0;
        int taken = 0;
        for (int j = 0; j < kSamples; ++j) {
            const double x = mGrid.XAt(0, left) + width * (j + 0.5) / kSamples;
            if (x < begin || x >= view.width || y >= view.height) continue;
            const double sample = view.At(static_cast<std::uint32_t>(x), y);
            sum += sample;
            squares += sample * sample;
            ++taken;
        }
        if (taken == 0) continue;
        rough += squares - sum * sum / taken;
        count += taken;
    }
    return count == 0 ? 0 : std::sqrt(std::max(rough, 0.0) / count);
}

// Whether nothing is printed before the first character: a number whose beginning is cut off is another one.
bool PlacedNumber::StartsHere(const PlaneView& view, double contrast, int rows) const {
    constexpr double kBoxBegins = -20;
    if (Roughness(view, kBoxBegins - 46, kBoxBegins - 4, rows) > contrast * kMostRoughness) return false;
    return mGrid.XAt(0, kBoxBegins + 3) >= 0 || mGrid.place.left >= -0.5;
}

// Whether nothing is printed at that character's place: the number ends before it.
bool PlacedNumber::EndsBefore(int cell, const PlaneView& view, double contrast, int rows) const {
    constexpr double kBoxEnds = 80; // from the place of the last character on
    const double before = static_cast<double>((cell - 1) * mGrid.layout.advance) * mGrid.UnitsPerPixel();
    if (mGrid.XAt(cell - 1, kBoxEnds - 3) > view.width) return mGrid.XAt(cell - 1, 70) <= view.width;
    return Roughness(view, before + kBoxEnds + 5, before + kBoxEnds + 55, rows) <= contrast * kMostRoughness;
}

PrintedNumber PlacedNumber::ReadRows(const PlaneView& view, int rows) {
    PrintedNumber result;
    std::vector<CellReading> cells;
    std::vector<bool> isPair;
    std::vector<int> glyphs;
    double certainty = 1;
    const double height = mGrid.layout.glyphHeight * mGrid.place.scaleY / (rows == kAllRows ? 1 : 2);
    const double width = mGrid.layout.glyphHeight * mGrid.place.scaleX * 0.6;
    if (height < kLeastRows || width < kLeastColumns) return result;
    const auto isEnd = [&](int cell) { return EndsBefore(cell, view, cells[0].contrast, rows); };
    for (int cell = 0; cell < kMostCharacters && (cell == 0 || !isEnd(cell)); ++cell) {
        NumberCell* place = CellAt(cell, view);
        if (!place) return result;
        cells.push_back(place->Read(rows));
        const CellReading& read = cells.back();
        isPair.push_back(!IsRead(read, cells[0], height));
        if (isPair.back() && !IsBlended(read)) {
            result.blended = std::ranges::count(isPair, true) > 1;
            return result;
        }
        glyphs.push_back(read.glyph);
        certainty = std::min(certainty, read.fit * (1 - read.doubt));
    }
    if (!StartsHere(view, cells[0].contrast, rows)) return result;
    if (std::ranges::count(isPair, true) > 0) {
        result.blended = true;
        TellApart(cells, isPair, result);
        return result;
    }
    result.number = NumberOf(glyphs);
    if (!result.number) return result;
    result.certainty = certainty;
    result.contrast = cells[0].contrast;
    result.dark = cells[0].dark;
    return result;
}

PlacedNumber::Numbers PlacedNumber::Read(const PlaneView& view) {
    mSampled.assign(mSampled.size(), false);
    Numbers numbers;
    for (int rows = 0; rows <= kAllRows; ++rows)
        numbers[static_cast<std::size_t>(rows)] = ReadRows(view, rows);
    // Fields of two frames look like a blend of them.
    if (numbers[0].number && numbers[1].number) numbers[kAllRows].blended = false;
    return numbers;
}

double PlacedNumber::FirstFit(const PlaneView& view) {
    mSampled.assign(mSampled.size(), false);
    const NumberCell* cell = CellAt(0, view);
    if (!cell) return 0;
    double fit = 0;
    for (int rows = 0; rows <= kAllRows; ++rows) {
        const CellReading reading = cell->Read(rows);
        if (reading.contrast >= kLeastContrast) fit = std::max(fit, reading.fit);
    }
    return fit;
}

/// The grid whose print has these edges: left, right, top, bottom. `last` is its last character's number.
NumberGrid PlacedNumber::GridWithin(const Edges& edges, int last) const {
    NumberGrid grid = mGrid;
    const double width =
        static_cast<double>(last * mGrid.layout.advance) + raster::kGlyphWidth / mGrid.UnitsPerPixel();
    grid.place.scaleX = (edges[1] - edges[0]) / width;
    grid.place.scaleY = (edges[3] - edges[2]) / mGrid.layout.glyphHeight;
    grid.place.left = edges[0] - static_cast<double>(mGrid.layout.glyphs.left) * grid.place.scaleX;
    grid.place.top = edges[2] - static_cast<double>(mGrid.layout.glyphs.top) * grid.place.scaleY;
    return grid;
}

/// What `text` in a grid does not explain of the samples, as a share of them.
double PlacedNumber::ErrorOf(const std::string& text, const NumberGrid& grid, int rows) const {
    double error = 0;
    double whole = 1e-9;
    for (std::size_t i = 0; i < text.size() && i < mCells.size(); ++i) {
        const int glyph = text[i] == '-' ? static_cast<int>(raster::kMinusGlyph) : text[i] - '0';
        const auto [left, variance] = mCells[i]->ErrorIn(grid, glyph, rows);
        error += left;
        whole += variance;
    }
    return error / whole;
}

NumberPlace PlacedNumber::Refined(std::int64_t number, int rows, double step) const {
    const std::string text = std::to_string(number);
    const auto last = static_cast<int>(text.size()) - 1;
    Edges edges{mGrid.XAt(0, 0), mGrid.XAt(last, raster::kGlyphWidth), mGrid.YAt(0),
                mGrid.YAt(raster::kGlyphHeight)};
    double best = ErrorOf(text, GridWithin(edges, last), rows);
    const auto tryMove = [&](double& edge, double way) {
        edge += way;
        const double error = ErrorOf(text, GridWithin(edges, last), rows);
        const bool better = error < best;
        if (better)
            best = error;
        else
            edge -= way;
        return better;
    };
    for (; step > 0.02; step /= 2) {
        for (bool moved = true; moved;) {
            moved = false;
            for (double& edge : edges)
                for (const double way : {-step, step})
                    if (tryMove(edge, way)) moved = true;
        }
    }
    return GridWithin(edges, last).place;
}

} // namespace corvane
