#pragma once

#include <string_view>

namespace corvane::commandline {

/// Writes text to standard output. What can't be written is noticed by `FlushOutput`.
void Print(std::string_view text);

/// Writes "synthex: `message`" to standard error as one sentence on one line.
void PrintError(std::string_view message);

/// Hands standard output to the system. Returns false, and tells the person, where it could not all be
/// written.
bool FlushOutput();

} // namespace corvane::commandline
