/// The host's frame buffers: the suites that make and examine them, their limits and their counts.
///
/// Buffers come from a pool keyed by size that hands out the one returned last, because it is still in the
/// cache: a steady render allocates nothing and touches no fresh pages. Every function may be called from any
/// thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "CvPluginAPI.h"

namespace corvane {

// The suites, as the contract describes them. They live as long as the process.

/// Makes frame buffers.
const CvVexelCreator2Suite3* VexelCreator2Suite();
/// Examines frame buffers and gives them back.
const CvVexelSuite1* VexelSuite();
/// Tells which pixel formats frame buffers can have.
const CvPixelFormatSuite1* PixelFormatSuite();

/// The longest side of a frame, in pixels, and its most bytes including the padding of rows.
inline constexpr std::uint32_t kDefaultMaxFrameSide = 32768;
inline constexpr std::uint64_t kDefaultMaxFrameBytes = std::uint64_t{2} << 30;

/// The limits of frames: pixels a side, and bytes including the padding of rows.
struct FrameLimits {
    std::uint32_t maxSide;
    std::uint64_t maxBytes;
};
/// The limits in force. `Create` fails for a frame over them.
FrameLimits GetFrameLimits();

/// What the pool keeps of buffers that nobody uses: enough for nine float frames of 3840 x 2160. Beyond
/// either, the buffers that were returned first are freed; the one returned last is kept whatever its size.
inline constexpr std::size_t kMaxIdleFrames = 64;
inline constexpr std::uint64_t kMaxIdleFrameBytes = std::uint64_t{1280} << 20;

/// Counts of the whole process.
struct FrameStatistics {
    std::uint64_t allocations = 0; ///< buffers taken from the system since the start
    std::uint64_t idleBytes = 0;   ///< in buffers that nobody uses
    std::uint32_t idleFrames = 0;  ///< buffers that nobody uses
    std::uint32_t liveFrames = 0;  ///< created and not yet disposed of
};
/// The counts at this moment.
FrameStatistics GetFrameStatistics();

} // namespace corvane
