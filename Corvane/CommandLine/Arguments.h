#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace corvane::commandline {

/// Reads the arguments and does what they ask for. Returns the exit status; wrong arguments are told to the
/// person and return `kExitUsage`. Throws what the request throws. Main thread.
int RunArguments(int argc, const char* const* argv);

/// Hands all that the program understands, every subcommand with its options, to `describe`, for manual pages
/// and the like. Takes a while. Main thread.
void DescribeArguments(const std::function<void(const CLI::App&)>& describe);

} // namespace corvane::commandline
