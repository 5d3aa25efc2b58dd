#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Export/Picture/StreamFacts.h"
#include "Tests/TestFolder.h"

namespace corvane::testing {

/// A frame of the test's own: rows padded by 20 bytes, all bytes 0xCD until set.
class TestFrame {
  public:
    TestFrame(std::uint32_t width, std::uint32_t height, RK_PixelFormat format)
        : mRowBytes(std::size_t{width} * BytesPerPixel(format) + 20),
          mBytes(mRowBytes * height, std::byte{0xCD}) {
        mFacts.size = {width, height};
        mFacts.raster = format;
        mFacts.tags = TagsFor(mFacts);
        mFacts.frames = 1;
    }

    StreamFacts& Facts() { return mFacts; }
    FrameView View() const {
        return {mBytes.data(), static_cast<std::int32_t>(mRowBytes), mFacts.size.width, mFacts.size.height,
                mFacts.raster};
    }
    std::byte* Pixel(std::uint32_t x, std::uint32_t y) {
        return mBytes.data() + mRowBytes * y + std::size_t{x} * BytesPerPixel(mFacts.raster);
    }
    void SetBytes(std::uint32_t x, std::uint32_t y, std::uint32_t pixel) {
        std::memcpy(Pixel(x, y), &pixel, 4);
    }
    void SetFloats(std::uint32_t x, std::uint32_t y, const float (&pixel)[4]) {
        std::memcpy(Pixel(x, y), pixel, 16);
    }
    /// Sets a pixel of either kind from four values 0..255 in memory order.
    void Set(std::uint32_t x, std::uint32_t y, std::uint32_t pixel) {
        if (BytesPerPixel(mFacts.raster) == 4) return SetBytes(x, y, pixel);
        float values[4];
        for (int i = 0; i < 4; ++i) values[i] = static_cast<float>(pixel >> (8 * i) & 255) / 255.0f;
        SetFloats(x, y, values);
    }

    /// Rows of one color each, all different, every third one by `seed`; on them a box of noise with these
    /// sides, in which every fifth row repeats the one above.
    void Draw(std::uint32_t left, std::uint32_t top, std::uint32_t right, std::uint32_t bottom,
              std::uint32_t seed = 0) {
        for (std::uint32_t y = 0; y < mFacts.size.height; ++y)
            for (std::uint32_t x = 0; x < mFacts.size.width; ++x) {
                const bool inside = x >= left && x < right && y >= top && y < bottom;
                const std::uint32_t row = inside && y % 5 == 0 && y > top ? y - 1 : y;
                Set(x, y, Noise(inside ? row * 7919 + x + 1 : y * 7919 + (y % 3 == 0 ? seed : 0)));
            }
    }
    static std::uint32_t Noise(std::uint32_t seed) {
        seed *= 2654435761u;
        seed ^= seed >> 15;
        return seed * 2246822519u;
    }

  private:
    std::size_t mRowBytes;
    std::vector<std::byte> mBytes;
    StreamFacts mFacts;
};

} // namespace corvane::testing
