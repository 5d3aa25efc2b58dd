/// What tests and benchmarks ask of the host services that no program does. A target of its own: only what
/// links `corvane_test_hooks` can call these. All may be called from any thread, unless they say otherwise,
/// and none can fail.
#pragma once

#include <cstdint>

namespace corvane {

/// Sets the largest frame that can be created: pixels a side, and bytes including the padding of rows. Frames
/// that exist already are not affected.
void SetFrameLimits(std::uint32_t maxSide, std::uint64_t maxBytes);

/// Frees every frame buffer that nobody uses.
void PurgeIdleFrames();

/// Lets the `nth` creation of a frame from now fail as if memory had run out (1 is the next one); 0 takes
/// that back.
void FailFrameCreation(std::uint32_t nth);

/// From now on, frames tell that their rows go up in memory, as in some hosts; or no longer.
void StoreFramesBottomUp(bool bottomUp);

/// Says whether a suite is to be refused; called on the thread that acquires it.
using SuiteRefusal = bool (*)(const char* name, std::int32_t version);

/// `AcquireSuite` fails, and stores null, for the suites that `refuse` returns true for; null refuses none.
void SetSuiteRefusal(SuiteRefusal refuse);

/// Blocks handed out by the host's memory functions and not freed yet.
std::int64_t HostBlocksInUse();

/// From now on, values that the program sets raise change messages, too, as in other toolkits; or no longer.
/// UI thread.
void RaiseProgramMessages(bool raise);

/// How many of the toolkit's controls and dialogs exist at this moment.
std::int64_t CountLiveNodes();

} // namespace corvane
