/// The plain ways of writing the bytes of a frame, beside which the raster service's fills are measured.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

/// The order in which a frame is filled: all at once, its even rows and then its odd ones, or row by row.
enum class FillShape { kSolid, kFields, kRows };

/// Memory that is filled as a frame is. Not owned.
struct FilledFrame {
    FillShape shape;
    std::size_t rowBytes; ///< a multiple of 32
    std::size_t rows;
    std::size_t pixelBytes; ///< 4, or 16, for which `rep stos` has no pattern
};

/// The plain ways, each filling the memory from `base`, aligned to 32 bytes, in the frame's order: 32-byte
/// stores, stores past the caches, and `rep stos` if it can.
std::vector<std::function<void(std::byte* base)>> PlainFills(const FilledFrame& frame);

/// What they are called, in the same order.
inline constexpr const char* kPlainWays[] = {"stores", "streamed", "rep_stos"};

/// The median, in any order. `values` must not be empty.
double Median(std::vector<double>& values);
