#include "RowScan.h"

#include <algorithm>
#include <cstring>

namespace corvane {
namespace {

// Vectors of the compilers; 16 bytes are what every x86-64 and ARM64 has.
using Pattern [[gnu::vector_size(16)]] = std::uint64_t; // one float pixel or four of bytes
constexpr std::size_t kBlockBytes = 512;
constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kFetchAhead = 4096;

Pattern PatternOf(const std::byte* pixel, std::uint32_t pixelBytes) {
    Pattern pattern;
    for (std::size_t i = 0; i < sizeof pattern; i += pixelBytes)
        std::memcpy(reinterpret_cast<std::byte*>(&pattern) + i, pixel, pixelBytes);
    return pattern;
}

// Without a branch inside the block. The processor's own look-ahead stops at each page, which costs a third
// of the time if the frame is no longer in the nearest cache; fetching past the frame's end is harmless.
bool BlockRepeats(const std::byte* block, Pattern pattern) {
    Pattern difference{};
    for (std::size_t i = 0; i < kBlockBytes; i += kCacheLine) __builtin_prefetch(block + kFetchAhead + i);
    for (std::size_t i = 0; i < kBlockBytes; i += sizeof pattern) {
        Pattern words;
        std::memcpy(&words, block + i, sizeof words);
        difference |= words ^ pattern;
    }
    return (difference[0] | difference[1]) == 0;
}

bool AllAlike(const std::byte* row, std::uint32_t pixels, std::uint32_t pixelBytes) {
    const std::size_t size = std::size_t{pixels} * pixelBytes;
    std::size_t done = 0;
    if (size >= kBlockBytes) {
        const Pattern pattern = PatternOf(row, pixelBytes);
        for (; done + kBlockBytes <= size; done += kBlockBytes)
            if (!BlockRepeats(row + done, pattern)) return false;
    }
    // Of the rest, each byte against the one a pixel before it.
    const std::size_t start = done == 0 ? pixelBytes : done;
    return start >= size || std::memcmp(row + start, row + start - pixelBytes, size - start) == 0;
}

// Moves the sides of the box out to the row's first and last pixel that differ from its first one. What is
// inside the sides already needs no look.
template <std::size_t PixelBytes>
void WidenBox(const std::byte* row, std::uint32_t width, Box& box) {
    const auto differs = [row](std::uint32_t x) {
        return std::memcmp(row, row + x * PixelBytes, PixelBytes) != 0;
    };
    std::uint32_t left = 1;
    while (left < box.left && !differs(left)) ++left;
    std::uint32_t right = width;
    while (right > box.right && !differs(right - 1)) --right;
    box.left = std::min(box.left, left);
    box.right = std::max(box.right, right);
}

} // namespace

bool RowIsUniform(const FrameView& frame, std::uint32_t y) {
    return AllAlike(frame.At(0, y), frame.width, BytesPerPixel(frame.format));
}

Box FindBox(const FrameView& frame) {
    const std::uint32_t pixelBytes = BytesPerPixel(frame.format);
    Box box{frame.width, frame.height, 0, 0};
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        const std::byte* row = frame.At(0, y);
        if (AllAlike(row, frame.width, pixelBytes)) continue;
        box.top = std::min(box.top, y);
        box.bottom = y + 1;
        if (pixelBytes == 4)
            WidenBox<4>(row, frame.width, box);
        else
            WidenBox<16>(row, frame.width, box);
    }
    return box;
}

} // namespace corvane
