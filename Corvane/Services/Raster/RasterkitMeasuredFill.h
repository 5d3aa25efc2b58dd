/// Which way of writing memory is the faster one. Private to the raster service.
#pragma once

#include <chrono>
#include <cstddef>

namespace corvane::raster {

/// One fill, as long as it lasts, and the choice of how to do it: through the caches, or past them.
///
/// Through them is faster if they still hold the memory, which depends on what else was written meanwhile, on
/// their size, and on the share of it that other programs and other guests of the same machine leave. So each
/// frame's memory is tried both ways now and then, and filled past the caches if that was faster.
/// Fills that begin near the place where the thread's last one began, as those of rows and fields do, belong
/// to the same frame.
///
/// The bytes are the same either way. Any thread.
class MeasuredFill {
  public:
    /// `start` is where the fill of `bytes` bytes begins.
    MeasuredFill(const std::byte* start, std::size_t bytes);
    ~MeasuredFill();
    MeasuredFill(const MeasuredFill&) = delete;
    MeasuredFill& operator=(const MeasuredFill&) = delete;

    /// Whether to write past the caches.
    bool IsStreamed() const { return mIsStreamed; }

  private:
    std::size_t mBytes;
    bool mIsStreamed;
    bool mIsTimed;
    std::chrono::steady_clock::time_point mBegun;
};

} // namespace corvane::raster
