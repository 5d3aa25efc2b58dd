#pragma once

#include <cstddef>
#include <cstdint>

#include "Engine/Frame.h"

namespace corvane {

/// Where the components of one row go: Y', Cb, Cr, A or R', G', B', A. Bytes or floats, as the format has
/// them; A may be null.
struct RowPlanes {
    void* plane[4] = {};
};

/// Takes `count` pixels of a row apart. The result has straight alpha and gamma-coded color (transfer of
/// BT.709-6, item 1.2) whatever the format has; color under an alpha of 0 becomes black. NaN becomes 0, and
/// floats are held to a range of +-1024.
void UnpackRow(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const RowPlanes& out);

/// Writes `count` pixels of an 8-bit R'G'B' format with straight or ignored alpha in the order `order`: for
/// each byte of a result pixel which component it is (0 R, 1 G, 2 B, 3 A). Three or four components.
void SwizzleRow(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const int* order,
                int components, std::byte* out);

/// Byte, or float, offset of component `component` (0 R or Y', 1 G or Cb, 2 B or Cr, 3 A) in a pixel.
constexpr int ComponentOffset(RK_PixelFormat format, int component) {
    constexpr int kBGRA[4] = {2, 1, 0, 3};
    constexpr int kARGB[4] = {1, 2, 3, 0};
    return (format & kRK_AlphaFirst) ? kARGB[component] : kBGRA[component];
}

} // namespace corvane
