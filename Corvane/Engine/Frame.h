#pragma once

#include <cstddef>
#include <cstdint>

#include "CvPluginAPI.h"

namespace corvane {

/// The pixels of a frame, not owned. Row r begins at `pixels + r * rowBytes`.
struct FrameView {
    const std::byte* pixels = nullptr;
    std::int32_t rowBytes = 0;
    std::uint32_t width = 0;   ///< pixels
    std::uint32_t height = 0;  ///< rows
    RK_PixelFormat format = 0; ///< always concrete
};

/// Bytes of one pixel of a concrete format: 4 (8-bit components) or 16 (float components).
constexpr std::uint32_t BytesPerPixel(RK_PixelFormat format) {
    return (format & kRK_Float) ? 16 : 4;
}

/// One frame as the plug-in delivered it. Owns the host's buffer and gives it back to the pool when
/// destroyed. May be moved to and destroyed on any thread.
class Frame {
  public:
    Frame() = default;
    /// Takes over `handle`, which must not be null. Throws `Failure` if the buffer can't be examined.
    explicit Frame(CvVexelHandle handle);
    ~Frame();
    Frame(Frame&& other) noexcept;
    Frame& operator=(Frame&& other) noexcept;

    explicit operator bool() const { return mHandle != nullptr; }
    const FrameView& View() const { return mView; }
    /// The plug-in API's code of the delivered format.
    CvPixelFormat Format() const { return mFormat; }

  private:
    CvVexelHandle mHandle = nullptr;
    FrameView mView;
    CvPixelFormat mFormat = 0;
};

} // namespace corvane
