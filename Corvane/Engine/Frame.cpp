#include "Frame.h"

#include <utility>

#include "Failure.h"
#include "Services/Frames/FrameBuffers.h"

namespace corvane {

Frame::Frame(CvVexelHandle handle) : mHandle(handle) {
    const CvVexelSuite1& suite = *VexelSuite();
    CvRect bounds{};
    char* pixels = nullptr;
    if (suite.GetBounds(handle, &bounds) < 0 || suite.GetRowBytes(handle, &mView.rowBytes) < 0 ||
        suite.GetPixels(handle, kCvVexelAccess_ReadWrite, &pixels) < 0 ||
        suite.GetPixelFormat(handle, &mFormat) < 0) {
        suite.Dispose(handle);
        throw Failure("The plug-in delivered a frame that can't be examined.");
    }
    mView.pixels = reinterpret_cast<const std::byte*>(pixels);
    mView.width = static_cast<std::uint32_t>(bounds.right - bounds.left);
    mView.height = static_cast<std::uint32_t>(bounds.bottom - bounds.top);
    mView.format = RasterFormatOf(mFormat);
}

Frame::~Frame() {
    if (mHandle != nullptr) VexelSuite()->Dispose(mHandle);
}

Frame::Frame(Frame&& other) noexcept
    : mHandle(std::exchange(other.mHandle, nullptr)), mView(std::exchange(other.mView, {})),
      mFormat(std::exchange(other.mFormat, 0)) {}

Frame& Frame::operator=(Frame&& other) noexcept {
    std::swap(mHandle, other.mHandle);
    std::swap(mView, other.mView);
    std::swap(mFormat, other.mFormat);
    return *this;
}

} // namespace corvane
