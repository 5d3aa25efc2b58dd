#pragma once

#include "LibavCodecs.h"

namespace corvane {

// Some encoders wait for ever for a thread of theirs that could not be started, so that this is found out
// before they are opened. Any thread; all of it fails only for want of memory.

/// How many threads the encoder may start: of as many as the machine is good for, or else of as few as it can
/// do with. Rather too many than too few.
unsigned MostThreads(const AVCodec& encoder, bool few);

/// Adds what keeps the encoder at few threads, whatever was asked for.
void KeepToFewThreads(CodecChoice& choice);

/// Whether so many threads can be started beside those that run: starts them and ends them again.
bool CanStartThreads(unsigned count);

} // namespace corvane
