#include "ExpectedRows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Export/Picture/PixelRows.h"

namespace corvane {

void ExpectedRows::Read(const FrameView& frame, const StreamFacts& facts) {
    const std::size_t rows = frame.height, pixelBytes = BytesPerPixel(facts.raster);
    mPixels.resize(rows * pixelBytes);
    for (std::uint32_t y = 0; y < frame.height; ++y)
        std::memcpy(mPixels.data() + y * pixelBytes, frame.At(0, y), pixelBytes);
    mParts.resize(rows * 4);
    mRows.resize(rows);
    RowPlanes planes;
    for (std::size_t part = 0; part < 4; ++part)
        planes.plane[part] =
            reinterpret_cast<std::byte*>(mParts.data()) + part * rows * BytesPerComponent(facts.raster);
    UnpackRow(mPixels.data(), frame.height, facts.raster, planes);

    SampleCoding coding{true, (facts.raster & kRK_709) != 0 ? kMatrix709 : kMatrix601, false, 8};
    if (!facts.IsYCbCr()) coding = {false, kMatrix709, true, 8};
    for (std::size_t row = 0; row < rows; ++row) {
        // Rows of a field are often alike.
        const std::byte* const pixel = mPixels.data() + row * pixelBytes;
        if (row >= 2 && std::memcmp(pixel, pixel - 2 * pixelBytes, pixelBytes) == 0) {
            mRows[row] = mRows[row - 2];
            continue;
        }
        Codes codes{};
        for (std::size_t part = 0; part < 4; ++part)
            codes[part] = facts.IsFloat() ? static_cast<const float*>(planes.plane[part])[row]
                                          : static_cast<const std::uint8_t*>(planes.plane[part])[row];
        mRows[row] = facts.IsFloat() ? FromParts(codes, coding) : Decode(codes, coding);
        if (!facts.HasAlpha()) mRows[row][3] = 1.0;
    }
}

bool ExpectedRows::FieldsAreSolid() const {
    // A gradient differs from top to bottom, unless it has one color; so two rows a field are enough. If the
    // number of rows is odd, the last one is of no field, and nobody fills it.
    const std::size_t middle = mRows.size() / 2 / 2 * 2,
                      last = mRows.size() < 2 ? 0 : mRows.size() / 2 * 2 - 2;
    for (std::size_t parity = 0; parity < std::min<std::size_t>(2, mRows.size()); ++parity)
        for (const std::size_t row : {middle, last})
            if (row + parity < mRows.size() && mRows[row + parity] != mRows[parity]) return false;
    return true;
}

Color ExpectedRows::Between(double row, int parity) const {
    const double step = parity < 0 ? 1.0 : 2.0, first = parity < 0 ? 0.0 : parity;
    const double last = std::floor((Height() - 1 - std::min(first, Height() - 1.0)) / step);
    const double at = std::clamp((row - first) / step, 0.0, last);
    const double whole = std::floor(at), part = at - whole;
    const auto index = [&](double field) {
        return std::min(static_cast<std::size_t>(first + field * step), mRows.size() - 1);
    };
    const Color &above = mRows[index(whole)], &below = mRows[index(std::min(whole + 1.0, last))];
    Color color;
    for (std::size_t i = 0; i < 4; ++i) color[i] = above[i] + (below[i] - above[i]) * part;
    return color;
}

} // namespace corvane
