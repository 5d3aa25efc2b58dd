#pragma once

#include <cstddef>
#include <cstdint>

#include "CvPluginAPI.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane {

/// The pixels of a frame, not owned. Row r begins at `pixels + r * rowBytes`. May be read on any thread.
struct FrameView {
    const std::byte* pixels = nullptr;
    std::int32_t rowBytes = 0;
    std::uint32_t width = 0;   ///< pixels
    std::uint32_t height = 0;  ///< rows
    RK_PixelFormat format = 0; ///< always concrete

    /// The first byte of the pixel at column `x` of row `y`, which must be inside.
    const std::byte* At(std::uint32_t x, std::uint32_t y) const {
        return pixels + std::int64_t{rowBytes} * y + std::size_t{x} * BytesPerPixel(format);
    }
};

/// One frame as the plug-in delivered it. Owns the host's buffer and gives it back to the pool when
/// destroyed. May be moved to and destroyed on any thread.
class Frame {
  public:
    Frame() = default;
    /// Takes over `handle`, which must not be null. Throws `Failure` if the buffer can't be examined;
    /// it has been given back then.
    explicit Frame(CvVexelHandle handle);
    ~Frame();
    Frame(Frame&& other) noexcept;
    Frame& operator=(Frame&& other) noexcept;

    /// Whether there is a frame; a moved-from one and a default-constructed one have none.
    explicit operator bool() const { return mHandle != nullptr; }
    /// The pixels, valid as long as the frame. Without a frame, no pixels.
    const FrameView& View() const { return mView; }
    /// The plug-in API's code of the delivered format.
    CvPixelFormat Format() const { return mFormat; }

  private:
    CvVexelHandle mHandle = nullptr;
    FrameView mView;
    CvPixelFormat mFormat = 0;
};

} // namespace corvane
