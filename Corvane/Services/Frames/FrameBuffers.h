/// The host's frame buffers: the suites that make and examine them, and what the bench controls and counts.
///
/// Buffers come from a pool keyed by size that hands out the one returned last, because it is still in the
/// cache: a steady render allocates nothing and touches no fresh pages. All functions may be called from any
/// thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "CvPluginAPI.h"

namespace corvane {

const CvVexelCreator2Suite3* VexelCreator2Suite();
const CvVexelSuite1* VexelSuite();
const CvPixelFormatSuite1* PixelFormatSuite();

inline constexpr std::uint32_t kDefaultMaxFrameSide = 32768; ///< pixels
inline constexpr std::uint64_t kDefaultMaxFrameBytes = std::uint64_t{2} << 30;

/// Sets the largest frame that can be created: pixels a side, and bytes including the padding of rows. Frames
/// that exist already are not affected.
void SetFrameLimits(std::uint32_t maxSide, std::uint64_t maxBytes);

/// The limits in force.
struct FrameLimits {
    std::uint32_t maxSide;
    std::uint64_t maxBytes;
};
FrameLimits GetFrameLimits();

/// What the pool keeps of buffers that nobody uses: enough for nine float frames of 3840 x 2160. Beyond
/// either, the buffers that were returned first are freed; the one returned last is kept whatever its size.
inline constexpr std::size_t kMaxIdleFrames = 64;
inline constexpr std::uint64_t kMaxIdleFrameBytes = std::uint64_t{1280} << 20;

/// Frees every buffer that nobody uses.
void PurgeIdleFrames();

/// Counts of the whole process.
struct FrameStatistics {
    std::uint64_t allocations = 0; ///< buffers taken from the system since the start
    std::uint64_t idleBytes = 0;   ///< in buffers that nobody uses
    std::uint32_t idleFrames = 0;
    std::uint32_t liveFrames = 0; ///< created and not yet disposed of
};
FrameStatistics GetFrameStatistics();

/// Lets the `nth` creation from now fail as if memory had run out (1 is the next one); 0 takes that back. For
/// tests.
void FailFrameCreation(std::uint32_t nth);

} // namespace corvane
