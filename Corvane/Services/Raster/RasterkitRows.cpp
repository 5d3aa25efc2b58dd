#include "RasterkitRows.h"

#include <cstring>

#include "RasterkitMeasuredFill.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace corvane::raster {
namespace {

// Vectors of the compiler's: the same source makes SSE2, AVX2 or NEON stores.
using Vector16 = Pattern;
using Vector32 [[gnu::vector_size(32)]] = std::uint32_t;

// Rows that are written side by side, a cache line of each in turn: in a cache that is shared, four streams
// keep more lines on their way than one.
constexpr std::uint32_t kRowsTogether = 4;

// Fills `kRows` rows of at least one vector. The last store of a row may overlap the one before it: both are
// whole numbers of pixels from the row's start, so they agree.
template <std::uint32_t kRows, typename Vector>
[[gnu::always_inline]] inline void FillTogether(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes,
                                                const Vector& vector) {
    constexpr std::size_t kLine = 64;
    const std::size_t linesEnd = rowBytes / kLine * kLine;
    for (std::size_t line = 0; line != linesEnd; line += kLine) {
        std::byte* at = start + line;
        for (std::uint32_t row = 0; row < kRows; ++row, at += step)
            for (std::size_t offset = 0; offset < kLine; offset += sizeof vector)
                std::memcpy(at + offset, &vector, sizeof vector);
    }
    for (std::uint32_t row = 0; row < kRows; ++row, start += step) {
        std::size_t offset = linesEnd;
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
    for (; rows > 0; --rows, row += step) FillTogether<1>(row, step, rowBytes, vector);
}

// Shorter rows gain nothing from being streamed.
constexpr std::size_t kLongRow = 1024;

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

// Streams: the lines need not be read first, which is half of what the memory has to do. From an aligned
// place as many vectors as there is room for. Returns where they end.
std::byte* StreamSSE2(std::byte* at, const std::byte* end, const Pattern& pattern) {
    __m128i vector;
    std::memcpy(&vector, &pattern, sizeof vector);
    for (; end - at >= std::ptrdiff_t{sizeof vector}; at += sizeof vector)
        _mm_stream_si128(reinterpret_cast<__m128i*>(at), vector);
    return at;
}

[[gnu::target("avx2")]] std::byte* StreamAVX2(std::byte* at, const std::byte* end, const Pattern& pattern) {
    __m128i half;
    std::memcpy(&half, &pattern, sizeof half);
    const __m256i vector = _mm256_broadcastsi128_si256(half);
    for (; end - at >= std::ptrdiff_t{sizeof vector}; at += sizeof vector)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(at), vector);
    return at;
}

#endif

} // namespace

void FillRows(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
              const Pattern& pattern) {
    // Without gaps they are one long row, in either direction: in order it is written fastest.
    if (rows > 1 && (step < 0 ? -step : step) == static_cast<std::ptrdiff_t>(rowBytes))
        return FillRows(step < 0 ? start + step * (rows - 1) : start, step, rowBytes * rows, 1, pattern);
    if (rowBytes < kLongRow) return FillRowsCached(start, step, rowBytes, rows, pattern);
    const MeasuredFill fill(start, rowBytes * rows);
    if (fill.IsStreamed())
        FillRowsStreamed(start, step, rowBytes, rows, pattern);
    else
        FillRowsCached(start, step, rowBytes, rows, pattern);
}

void FillRowsCached(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                    const Pattern& pattern) {
    if (rowBytes < sizeof(Vector16)) return FillNarrow(start, step, rowBytes, rows, pattern);
#if defined(__x86_64__)
    if (gHasAVX2 && rowBytes >= sizeof(Vector32)) return FillAVX2(start, step, rowBytes, rows, pattern);
#endif
    FillRowsBaseline(start, step, rowBytes, rows, pattern);
}

void FillRowsBaseline(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                      const Pattern& pattern) {
    FillBy<Vector16>(start, step, rowBytes, rows, pattern);
}

#if defined(__x86_64__)

void FillRowsStreamed(std::byte* row, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                      const Pattern& pattern) {
    constexpr std::size_t kAligned = sizeof(__m256i);
    if (rowBytes < kAligned) return FillRowsBaseline(row, step, rowBytes, rows, pattern);
    const auto stream = gHasAVX2 ? StreamAVX2 : StreamSSE2;
    const Pattern twice[2] = {pattern, pattern};
    for (; rows > 0; --rows, row += step) {
        std::byte* const end = row + rowBytes;
        // The pattern goes on in the aligned vectors as it begins in what stands before them.
        const std::size_t before = -reinterpret_cast<std::uintptr_t>(row) % kAligned;
        Pattern shifted;
        std::memcpy(&shifted, reinterpret_cast<const std::byte*>(twice) + before % sizeof shifted,
                    sizeof shifted);
        std::memcpy(row, twice, sizeof twice);
        if (stream(row + before, end, shifted) != end) std::memcpy(end - sizeof twice, twice, sizeof twice);
    }
}

void CompleteFills() noexcept {
    _mm_sfence();
}

#else

void FillRowsStreamed(std::byte* start, std::ptrdiff_t step, std::size_t rowBytes, std::uint32_t rows,
                      const Pattern& pattern) {
    FillRowsBaseline(start, step, rowBytes, rows, pattern);
}

void CompleteFills() noexcept {}

#endif

} // namespace corvane::raster
