#pragma once

namespace corvane::commandline {

/// Reads the arguments and does what they ask for. Returns the exit status; wrong arguments are told to the
/// person and return `kExitUsage`. Throws what the request throws. Main thread.
int RunArguments(int argc, const char* const* argv);

} // namespace corvane::commandline
