#include "NumberCell.h"

#include <algorithm>
#include <cmath>

#include "GlyphCoverage.h"

namespace corvane {
namespace {

// What is looked at of a character's place, in units of its grid: the character and what of the box lies
// around it. The next one begins at 76.
constexpr double kLeft = -8;
constexpr double kRight = 68;
constexpr double kTop = -12;
constexpr double kBottom = 112;

constexpr std::size_t kMostColumns = 20;
constexpr std::size_t kMostRows = 20; // of each field

// Up to `most` of the numbers from `first` on that are below `end`, `step` apart or a multiple of it, spread
// evenly.
void Spread(std::uint32_t first, std::uint32_t end, std::uint32_t step, std::size_t most,
            std::vector<std::uint32_t>& numbers) {
    if (first >= end) return;
    const std::size_t count = (end - first + step - 1) / step;
    const std::size_t taken = std::min(count, most);
    for (std::size_t i = 0; i < taken; ++i)
        numbers.push_back(first + static_cast<std::uint32_t>((2 * i + 1) * count / (2 * taken)) * step);
}

std::uint32_t Pixel(double at) {
    return static_cast<std::uint32_t>(std::max(std::ceil(at - 0.5), 0.0));
}

} // namespace

raster::PrintLayout FrameNumberLayout(Size frame, std::size_t count) {
    // As the plug-in prints them.
    return raster::LayOutPrint(frame.width, frame.height, 0.12f, {0.05f, 0.05f}, count);
}

void NumberCell::Moments::Add(const Moments& other) {
    count += other.count;
    sum += other.sum;
    squares += other.squares;
    for (std::size_t i = 0; i < product.size(); ++i) product[i] += other.product[i];
}

void NumberCell::Templates::Add(const Templates& other) {
    for (std::size_t i = 0; i < sum.size(); ++i) {
        sum[i] += other.sum[i];
        for (std::size_t j = 0; j < sum.size(); ++j) product[i][j] += other.product[i][j];
    }
}

bool NumberCell::IsInside(const NumberGrid& grid, int cell, const PlaneView& view) {
    return grid.XAt(cell, kLeft) >= 0 && grid.XAt(cell, kRight) <= view.width && grid.YAt(kTop) >= 0 &&
           grid.YAt(kBottom) <= view.height;
}

NumberCell::NumberCell(const NumberGrid& grid, int cell, const PlaneView& view) : mCell(cell) {
    const auto end = [](double at, std::uint32_t size) { return std::min(Pixel(at), size); };
    Spread(Pixel(grid.XAt(cell, kLeft)), end(grid.XAt(cell, kRight), view.width), 1, kMostColumns, mColumns);
    const std::uint32_t top = Pixel(grid.YAt(kTop));
    const std::uint32_t bottom = end(grid.YAt(kBottom), view.height);
    Spread(top + top % 2, bottom, 2, kMostRows, mRows);
    mEvenRows = mRows.size();
    Spread(top + 1 - top % 2, bottom, 2, kMostRows, mRows);
    Cover(grid);
}

void NumberCell::Cover(const NumberGrid& grid) {
    mCover.resize(mColumns.size() * mRows.size());
    mSamples.resize(mCover.size());
    std::size_t at = 0;
    for (std::size_t row = 0; row < mRows.size(); ++row) {
        Templates& templates = mTemplates[row < mEvenRows ? 0 : 1];
        const auto top = static_cast<float>(grid.RowAt(mRows[row]));
        const auto bottom = static_cast<float>(grid.RowAt(mRows[row] + 1.0));
        for (const std::uint32_t column : mColumns) {
            const auto left = static_cast<float>(grid.ColumnAt(mCell, column));
            const auto right = static_cast<float>(grid.ColumnAt(mCell, column + 1.0));
            auto& cover = mCover[at++];
            cover = {};
            for (std::uint32_t i = 0; i < kGlyphs; ++i) {
                cover[i] = GlyphCoverage(i, left, top, right, bottom);
                templates.sum[i] += cover[i];
                for (std::uint32_t j = 0; j <= i; ++j) templates.product[i][j] += double{cover[i]} * cover[j];
            }
        }
    }
    mTemplates[2].Add(mTemplates[0]);
    mTemplates[2].Add(mTemplates[1]);
}

void NumberCell::Sample(const PlaneView& view) {
    mMoments = {};
    std::size_t at = 0;
    for (std::size_t row = 0; row < mRows.size(); ++row) {
        std::array<float, kPadded> products{};
        float sum = 0;
        float squares = 0;
        for (const std::uint32_t column : mColumns) {
            const float sample = view.At(column, mRows[row]);
            const auto& cover = mCover[at];
            mSamples[at++] = sample;
            sum += sample;
            squares += sample * sample;
            for (std::size_t i = 0; i < kPadded; ++i) products[i] += sample * cover[i];
        }
        Moments& moments = mMoments[row < mEvenRows ? 0 : 1];
        moments.count += static_cast<double>(mColumns.size());
        moments.sum += sum;
        moments.squares += squares;
        for (std::size_t i = 0; i < kPadded; ++i) moments.product[i] += products[i];
    }
    mMoments[2].Add(mMoments[0]);
    mMoments[2].Add(mMoments[1]);
}

CellReading NumberCell::Read(int rows) const {
    CellReading reading;
    const Moments& moments = mMoments[static_cast<std::size_t>(rows)];
    const Templates& templates = mTemplates[static_cast<std::size_t>(rows)];
    if (moments.count == 0) return reading;
    const double variance = moments.squares - moments.sum * moments.sum / moments.count;
    reading.mean = moments.sum / moments.count;
    if (variance <= 1e-9) return reading;
    double second = 0;
    for (std::size_t i = 0; i < kGlyphs; ++i) {
        const double spread = templates.product[i][i] - templates.sum[i] * templates.sum[i] / moments.count;
        if (spread <= 1e-9) continue;
        const double shared = moments.product[i] - moments.sum * templates.sum[i] / moments.count;
        const double fit = shared / std::sqrt(spread * variance);
        if (fit <= reading.fit) {
            second = std::max(second, fit);
            continue;
        }
        second = reading.fit;
        reading.fit = fit;
        reading.glyph = static_cast<int>(i);
        reading.contrast = shared / spread;
        reading.dark = reading.mean - reading.contrast * templates.sum[i] / moments.count;
    }
    const double left = 1 - reading.fit * reading.fit;
    reading.doubt = std::min(left / std::max(1 - second * second, 1e-9), 1.0);
    ReadPair(moments, templates, variance, reading);
    return reading;
}

void NumberCell::ReadPair(const Moments& moments, const Templates& templates, double variance,
                          CellReading& reading) const {
    const auto spread = [&](std::size_t i, std::size_t j) {
        return templates.product[i][j] - templates.sum[i] * templates.sum[j] / moments.count;
    };
    const auto shared = [&](std::size_t i) {
        return moments.product[i] - moments.sum * templates.sum[i] / moments.count;
    };
    for (std::size_t i = 1; i < kGlyphs; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const double both = spread(i, j);
            const double determinant = spread(i, i) * spread(j, j) - both * both;
            if (determinant <= 1e-9) continue;
            const double a = (shared(i) * spread(j, j) - shared(j) * both) / determinant;
            const double b = (shared(j) * spread(i, i) - shared(i) * both) / determinant;
            const double explained = a * shared(i) + b * shared(j);
            if (a <= 0 || b <= 0 || explained <= reading.pairFit * reading.pairFit * variance) continue;
            reading.pairFit = std::sqrt(explained / variance);
            reading.pair = {static_cast<int>(a >= b ? i : j), static_cast<int>(a >= b ? j : i)};
            reading.weaker = std::min(a, b) / (a + b);
            reading.pairContrast = a + b;
        }
    }
}

std::array<double, 2> NumberCell::ErrorIn(const NumberGrid& grid, int glyph, int rows) const {
    double sum = 0, squares = 0, cover = 0, covers = 0, product = 0;
    const std::size_t first = rows == 1 ? mEvenRows : 0;
    const std::size_t last = rows == 0 ? mEvenRows : mRows.size();
    std::size_t at = first * mColumns.size();
    for (std::size_t row = first; row < last; ++row) {
        const auto top = static_cast<float>(grid.RowAt(mRows[row]));
        const auto bottom = static_cast<float>(grid.RowAt(mRows[row] + 1.0));
        for (const std::uint32_t column : mColumns) {
            const double covered = GlyphCoverage(
                static_cast<std::uint32_t>(glyph), static_cast<float>(grid.ColumnAt(mCell, column)), top,
                static_cast<float>(grid.ColumnAt(mCell, column + 1.0)), bottom);
            const double sample = mSamples[at++];
            sum += sample;
            squares += sample * sample;
            cover += covered;
            covers += covered * covered;
            product += covered * sample;
        }
    }
    const auto count = static_cast<double>(std::max<std::size_t>((last - first) * mColumns.size(), 1));
    const double variance = squares - sum * sum / count;
    const double spread = covers - cover * cover / count;
    const double shared = product - sum * cover / count;
    if (spread <= 1e-9 || shared <= 0) return {variance, variance};
    return {variance - shared * shared / spread, variance};
}

} // namespace corvane
