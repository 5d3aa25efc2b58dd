#pragma once

namespace corvane::commandline {

/// Reads the arguments and does what they ask for. Returns the exit status. Throws what the request throws.
int RunArguments(int argc, const char* const* argv);

} // namespace corvane::commandline
