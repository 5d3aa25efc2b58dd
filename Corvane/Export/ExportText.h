#pragma once

#include <cstdint>
#include <string>

namespace corvane {

/// An amount of data for a person, as in "12.3 MB". Never depends on the locale.
std::string BytesText(std::uint64_t bytes);

/// A time that a person waits: the two units that matter, as in "3 min 05 s".
std::string WaitText(double seconds);

} // namespace corvane
