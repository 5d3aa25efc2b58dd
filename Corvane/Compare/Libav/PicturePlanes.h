#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "Compare/Video.h"

struct AVFrame;

namespace corvane {

/// Hands out the planes of decoded pictures: the decoder's own if they are what a `VideoPicture` has, else
/// taken apart into memory that is used again. One thread at a time; what it hands out is for any.
class PicturePlanes {
  public:
    /// Whether pictures of libav's pixel format `format` can be taken apart.
    static bool Knows(int format);

    /// Fills in `picture`: format, planes, strides and owner. The frame's range is that of `fullRange`.
    /// Throws `std::bad_alloc`.
    void Take(const std::shared_ptr<const AVFrame>& frame, bool fullRange, VideoPicture& picture);

  private:
    using Bytes = std::vector<std::byte>;
    std::shared_ptr<Bytes> Room(std::size_t size);
    static void TakeApart(const AVFrame& frame, const std::array<std::size_t, 4>& start, Bytes& room,
                          VideoPicture& picture);

    /// Memory of pictures that are gone. They may go on any thread, and outlive this object.
    struct Free {
        std::mutex mutex; // guards what follows
        std::vector<std::unique_ptr<Bytes>> bytes;
    };
    const std::shared_ptr<Free> mFree = std::make_shared<Free>();
};

} // namespace corvane
