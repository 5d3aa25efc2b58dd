#pragma once

#include <atomic>

/// Signals that end programs (SIGINT, SIGTERM, SIGHUP), which cancel long work instead.
namespace corvane::commandline::EndingSignal {

/// Has the first such signal set `Cancelled`. A second one ends the program, whatever holds it; temporary
/// files are removed then if that can be. Signals that are ignored stay so. Main thread.
void Take();

/// Whether a signal came.
const std::atomic<bool>& Cancelled();

/// The status to exit with if one came: 128 plus its number.
int ExitStatus();

} // namespace corvane::commandline::EndingSignal
