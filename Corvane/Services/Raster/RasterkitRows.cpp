#include "RasterkitRows.h"

#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace corvane::raster {
namespace {

// Vectors of the compiler's: the same source makes SSE2, AVX2 or NEON stores.
using Vector16 = Pattern;
using Vector32 [[gnu::vector_size(32)]] = std::uint32_t;

// Rows that are written side by side, a cache line of each in turn. Four streams keep more misses in flight
// than one, and the prefetcher's excursions past the end of a row land in rows that are about to be written.
constexpr std::uint32_t kRowsTogether = 4;

// A single row of at least this many bytes gains from being written as two halves side by side.
constexpr std::size_t kWideRow = 12 * 1024;

// Fills `kRows` rows of at least one vector. The last store of a row may overlap the one before it: both are
// whole numbers of pixels from the row's start, so they agree.
template <std::uint32_t kRows, typename Vector>
[[gnu::always_inline]] inline void FillTogether(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes,
                                                const Vector& vector) {
    constexpr std::size_t kBlock = kRows == 1 ? 128 : 64;
    const std::size_t blocksEnd = rowBytes / kBlock * kBlock;
    for (std::size_t block = 0; block != blocksEnd; block += kBlock) {
        std::byte* at = start + block;
        for (std::uint32_t row = 0; row < kRows; ++row, at += step)
            for (std::size_t offset = 0; offset < kBlock; offset += sizeof vector)
                std::memcpy(at + offset, &vector, sizeof vector);
    }
    for (std::uint32_t row = 0; row < kRows; ++row, start += step) {
        std::size_t offset = blocksEnd;
        for (; offset + sizeof vector <= rowBytes; offset += sizeof vector)
            std::memcpy(start + offset, &vector, sizeof vector);
        if (offset != rowBytes) std::memcpy(start + rowBytes - sizeof vector, &vector, sizeof vector);
    }
}

template <typename Vector>
[[gnu::always_inline]] inline void FillBy(std::byte* row, std::ptrdiff_t step, std::size_t rowBytes,
                                          std::uint32_t rows, const Vector& vector) {
    for (; rows >= kRowsTogether; rows -= kRowsTogether, row += kRowsTogether * step)
        FillTogether<kRowsTogether>(row, step, rowBytes, vector);
    if (rowBytes >= kWideRow && rowBytes % 128 == 0) {
        const auto half = static_cast<std::ptrdiff_t>(rowBytes / 2);
        for (; rows > 0; --rows, row += step) FillTogether<2>(row, half, rowBytes / 2, vector);
    }
    for (; rows > 0; --rows, row += step) FillTogether<1>(row, step, rowBytes, vector);
}

// Rows that are narrower than the pattern: up to three 8-bit pixels.
void FillNarrow(std::byte* row, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                const Pattern& pattern) {
    for (; rows > 0; --rows, row += step) std::memcpy(row, &pattern, rowBytes);
}

#if defined(__x86_64__)

// False until the library's constructors have run, which is correct too.
const bool gHasAVX2 = __builtin_cpu_supports("avx2") != 0;

[[gnu::target("avx2")]] void FillAVX2(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes,
                                      std::uint32_t rows, const Pattern& pattern) {
    const Vector32 vector{pattern[0], pattern[1], pattern[2], pattern[3],
                          pattern[0], pattern[1], pattern[2], pattern[3]};
    FillBy(start, step, rowBytes, rows, vector);
}

// Rows of at least this many bytes belong to frames that no cache holds (3072 float pixels: 84 MiB at 16:9).
// Written past the caches, their lines need not be read first.
constexpr std::size_t kStreamedRow = 48 * 1024;

bool CanBeStreamed(const std::byte* start, std::ptrdiff_t step, std::size_t rowBytes) {
    const auto bits = reinterpret_cast<std::uintptr_t>(start) | static_cast<std::size_t>(step) | rowBytes;
    return bits % sizeof(__m128i) == 0;
}

void StreamRows(std::byte* row, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                const Pattern& pattern) {
    const auto vector = reinterpret_cast<__m128i>(pattern);
    for (; rows > 0; --rows, row += step)
        for (std::size_t offset = 0; offset < rowBytes; offset += sizeof vector)
            _mm_stream_si128(reinterpret_cast<__m128i*>(row + offset), vector);
    _mm_sfence();
}

#endif

} // namespace

void FillRows(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
              const Pattern& pattern) {
    if (rowBytes < sizeof(Vector16)) return FillNarrow(start, step, rowBytes, rows, pattern);
#if defined(__x86_64__)
    if (rowBytes >= kStreamedRow && CanBeStreamed(start, step, rowBytes))
        return StreamRows(start, step, rowBytes, rows, pattern);
    if (gHasAVX2 && rowBytes >= sizeof(Vector32)) return FillAVX2(start, step, rowBytes, rows, pattern);
#endif
    FillRowsBaseline(start, step, rowBytes, rows, pattern);
}

void FillRowsBaseline(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                      const Pattern& pattern) {
    FillBy<Vector16>(start, step, rowBytes, rows, pattern);
}

} // namespace corvane::raster
