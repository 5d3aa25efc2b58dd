#pragma once

#include <string_view>

namespace corvane::commandline {

// What the program says. Any thread; none of these throws anything but `std::bad_alloc`.

/// Writes text for programs to standard output, as it is. `FlushOutput` notices if it can't be written.
void Print(std::string_view text);

/// Writes a line for people to standard output, `Quoted`.
void PrintLine(std::string_view text);

/// Writes "synthex: `message`" to standard error as one sentence on one line, `Quoted`. Does not throw: if
/// there is no memory, the message stands as it is.
void PrintError(std::string_view message);

/// Hands standard output to the system. Returns false, and tells the person, if not all of it could be
/// written.
bool FlushOutput();

} // namespace corvane::commandline
