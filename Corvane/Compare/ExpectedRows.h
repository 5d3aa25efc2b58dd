#pragma once

#include <cstdint>
#include <vector>

#include "ColorSpace.h"
#include "Engine/Frame.h"
#include "Export/Picture/StreamFacts.h"

namespace corvane {

/// The colors that the rows of a clip's frame have, each row beside the frame number. Kept to be filled
/// again, so that steady use allocates nothing. One thread at a time.
class ExpectedRows {
  public:
    /// Reads a delivered frame of the clip that `facts` tells: its row's first pixel, which no number covers.
    /// Floats may lie outside 0..1. Throws `std::bad_alloc`.
    void Read(const FrameView& frame, const StreamFacts& facts);

    std::uint32_t Height() const { return static_cast<std::uint32_t>(mRows.size()); }
    const Color& At(std::uint32_t row) const { return mRows[row]; }
    /// Whether even rows are all of one color, and odd rows are.
    bool FieldsAreSolid() const;
    /// The color at a place between rows (0.0 is row 0), taken from one field if `parity` is 0 or 1, from
    /// neighboring rows if it is -1. Places outside give the row at the edge. There is at least one row.
    Color Between(double row, int parity = -1) const;

  private:
    std::vector<std::byte> mPixels;
    std::vector<float> mParts;
    std::vector<Color> mRows;
};

} // namespace corvane
