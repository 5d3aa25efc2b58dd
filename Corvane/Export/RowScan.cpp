#include "RowScan.h"

#include <algorithm>
#include <cstring>

namespace corvane {
namespace {

// Comparing a row with itself one pixel further is one pass at memory speed.
bool AllAlike(const std::byte* row, std::uint32_t pixels, std::uint32_t pixelBytes) {
    return pixels < 2 || std::memcmp(row, row + pixelBytes, std::size_t{pixels - 1} * pixelBytes) == 0;
}

} // namespace

bool RowIsUniform(const FrameView& frame, std::uint32_t y) {
    return AllAlike(RowOf(frame, y), frame.width, BytesPerPixel(frame.format));
}

Box FindBox(const FrameView& frame) {
    const std::uint32_t pixelBytes = BytesPerPixel(frame.format);
    Box box{frame.width, frame.height, 0, 0};
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        const std::byte* row = RowOf(frame, y);
        if (AllAlike(row, frame.width, pixelBytes)) continue;
        const auto differs = [&](std::uint32_t x) {
            return std::memcmp(row, row + std::size_t{x} * pixelBytes, pixelBytes) != 0;
        };
        box.top = std::min(box.top, y);
        box.bottom = y + 1;
        std::uint32_t left = 1;
        while (left < box.left && !differs(left)) ++left;
        std::uint32_t right = frame.width;
        while (right > box.right && !differs(right - 1)) --right;
        box.left = std::min(box.left, left);
        box.right = std::max(box.right, right);
    }
    return box;
}

} // namespace corvane
