#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// The text as one line that does nothing to a terminal: control characters, and bytes that are not UTF-8,
/// become "\n", "\t", "\r" or the likes of "\x1b". For whatever people read there: names of files and texts
/// of plug-ins may hold any bytes. Any thread.
std::string Quoted(std::string_view text);

} // namespace corvane
