#pragma once

#include <cstdint>
#include <string>

namespace corvane {

// Texts for people, without a locale. Any thread; they fail only for want of memory.

/// An amount of data, as in "12.3 MB".
std::string BytesText(std::uint64_t bytes);

/// A time that a person waits, in the two units that matter, as in "3 min 05 s".
std::string WaitText(double seconds);

} // namespace corvane
