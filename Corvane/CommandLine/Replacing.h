#pragma once

#include <cstdint>
#include <filesystem>

namespace corvane::commandline {

/// What is to become of a file that is in the place of a new one.
enum class Replacing : std::uint8_t {
    kAsk, ///< a person on a terminal is asked
    kYes,
    kNo,
};

/// Whether somebody can be asked: standard input and standard error are a terminal. Main thread, as for
/// all here.
bool CanAsk();

/// Returns if the file, which exists, may be replaced: if that was said, if the person who is asked says so,
/// or if nobody can be asked. Throws `Failure`, which names the file and the remedy, if it is to be kept.
void RequireReplaceable(const std::filesystem::path& file, Replacing replacing);

} // namespace corvane::commandline
