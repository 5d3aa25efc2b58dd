#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "NumberCell.h"
#include "NumberReader.h"
#include "PlaneView.h"

namespace corvane {

/// Reads a number at a place that is known, of pictures of one size. What characters look like there is kept.
/// One thread at a time.
class PlacedNumber {
  public:
    /// What even rows, odd rows and all rows show.
    using Numbers = std::array<PrintedNumber, 3>;

    /// For pictures of the size of `view`, which is turned back. Throws `std::bad_alloc`.
    PlacedNumber(Size frame, const NumberPlace& place, const PlaneView& view);

    /// Reads a picture. Throws `std::bad_alloc`.
    Numbers Read(const PlaneView& view);

    /// How well a first character fits, whatever it is, from 0 to 1: what hypotheses are sorted by.
    double FirstFit(const PlaneView& view);

    /// Moves the place so that the number that was read fits the last picture best: in its even rows (0), in
    /// its odd rows (1), or in all (2). `step` is how far the place may be off, in pixels.
    NumberPlace Refined(std::int64_t number, int rows, double step) const;

    const NumberPlace& Place() const { return mGrid.place; }

  private:
    using Edges = std::array<double, 4>; // of the print, in pixels: left, right, top, bottom
    NumberGrid GridWithin(const Edges& edges, int last) const;
    double ErrorOf(const std::string& text, const NumberGrid& grid, int rows) const;
    struct Row; // what some rows of the picture show, character by character
    NumberCell* CellAt(int cell, const PlaneView& view);
    bool StartsHere(const PlaneView& view, double contrast, int rows) const;
    bool EndsBefore(int cell, const PlaneView& view, double contrast, int rows) const;
    double Roughness(const PlaneView& view, double left, double right, int rows) const;
    PrintedNumber ReadRows(const PlaneView& view, int rows);

    NumberGrid mGrid;
    PlaneView mSize;
    std::vector<std::unique_ptr<NumberCell>> mCells;
    std::vector<bool> mSampled; // which cells hold the samples of the present picture
};

} // namespace corvane
