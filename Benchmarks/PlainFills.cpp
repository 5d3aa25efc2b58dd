#include "PlainFills.h"

#include <algorithm>

#include <immintrin.h>

namespace {

[[gnu::target("avx2")]] void Store(std::byte* at, std::size_t size) {
    const __m256i value = _mm256_set1_epi32(0x11223344);
    for (std::size_t i = 0; i < size; i += 32) _mm256_store_si256(reinterpret_cast<__m256i*>(at + i), value);
}

[[gnu::target("avx2")]] void Stream(std::byte* at, std::size_t size) {
    const __m256i value = _mm256_set1_epi32(0x11223344);
    for (std::size_t i = 0; i < size; i += 32) _mm256_stream_si256(reinterpret_cast<__m256i*>(at + i), value);
}

void Repeat(std::byte* at, std::size_t size) {
    std::size_t count = size / 4;
    asm volatile("rep stosl" : "+D"(at), "+c"(count) : "a"(0x11223344) : "memory");
}

template <void (*kFill)(std::byte*, std::size_t)>
void FillFrame(const FilledFrame& frame, std::byte* base) {
    if (frame.shape == FillShape::kSolid) return kFill(base, frame.rowBytes * frame.rows);
    const std::size_t fields = frame.shape == FillShape::kFields ? 2 : 1;
    for (std::size_t field = 0; field < fields; ++field)
        for (std::size_t row = field; row < frame.rows; row += fields)
            kFill(base + row * frame.rowBytes, frame.rowBytes);
}

} // namespace

std::vector<std::function<void(std::byte*)>> PlainFills(const FilledFrame& frame) {
    std::vector<std::function<void(std::byte*)>> ways = {
        [=](std::byte* base) { FillFrame<Store>(frame, base); },
        [=](std::byte* base) {
            FillFrame<Stream>(frame, base);
            _mm_sfence();
        }};
    if (frame.pixelBytes == 4) ways.emplace_back([=](std::byte* base) { FillFrame<Repeat>(frame, base); });
    return ways;
}

double Median(std::vector<double>& values) {
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    return values[values.size() / 2];
}
