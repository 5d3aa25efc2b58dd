/// What of the memory that is filled the caches still hold. Private to the raster service.
#pragma once

#include <cstddef>

namespace corvane::raster {

/// Whether the last-level cache probably still holds the memory from `start` on, which is about to be filled:
/// if little else was filled since it was filled last. To be asked once before each fill of `bytes` bytes.
/// Fills that go on near the place where the thread's last one began, as rows and fields do, share its answer.
/// An estimate, for speed only. Any thread.
bool IsProbablyCached(const std::byte* start, std::size_t bytes);

} // namespace corvane::raster
