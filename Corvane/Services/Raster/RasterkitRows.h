/// Writes a pattern of pixels to rows of memory. Private to the host's services.
#pragma once

#include <cstddef>
#include <cstdint>

#include "RasterkitPixel.h"

namespace corvane::raster {

/// Fills `rows` rows of `rowBytes` bytes with the pattern, each row beginning with its first byte, and going
/// on `step` bytes (any sign) from row to row. `rowBytes` is a whole number of pixels; nothing outside the
/// rows is touched. Any alignment, any thread.
void FillRows(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
              const Pattern& pattern);

/// The same through the caches: for a small part of a frame, which says nothing about the speed of whole
/// ones.
void FillRowsCached(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                    const Pattern& pattern);

/// The same with the vectors that every machine of this kind has; `FillRows` uses wider ones if there are
/// any. Rows have at least 16 bytes. For `FillRows` and its test.
void FillRowsBaseline(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                      const Pattern& pattern);

/// The same past the caches, if the machine can: for memory that they don't hold. For `FillRows` and its
/// test.
void FillRowsStreamed(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                      const Pattern& pattern);

/// Makes what this thread filled visible to every thread that it tells of it from now on, in whatever way.
/// A lock or a system call does that too.
void CompleteFills() noexcept;

} // namespace corvane::raster
