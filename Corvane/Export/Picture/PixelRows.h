#pragma once

#include <cstddef>
#include <cstdint>

#include "Engine/Frame.h"

namespace corvane {

/// Room for the components of one row, not owned: Y', Cb, Cr, A or R', G', B', A. Bytes or floats, as the
/// format has them; A may be null.
struct RowPlanes {
    void* plane[4] = {};
};

/// Takes `count` pixels of a row apart. The result has straight alpha and gamma-coded color (transfer of
/// BT.709-6, item 1.2) whatever the format has; color under an alpha of 0 becomes black. NaN becomes 0, and
/// floats are held to a range of +-1024. `format` must be concrete. Any thread.
void UnpackRow(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const RowPlanes& out);

/// Turns the gamma-coded color of such a row of floats into linear light. Any thread.
void LinearizeRow(std::uint32_t count, const RowPlanes& row);

/// Multiplies the color of a row of floats by its alpha. Any thread.
void PremultiplyRow(std::uint32_t count, const RowPlanes& row);

/// Writes `count` pixels of an 8-bit R'G'B' format with straight or ignored alpha in the order `order`: for
/// each byte of a result pixel which component it is (0 R, 1 G, 2 B, 3 A). Three or four components. Any
/// thread.
void SwizzleRow(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const int* order,
                int components, std::byte* out);

} // namespace corvane
