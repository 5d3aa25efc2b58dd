#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace corvane::commandline {

/// How a process that makes checks came to its end.
struct CheckProcessEnd {
    bool inOrder = false;  ///< whether it ended by itself and said that all is well
    bool timedOut = false; ///< whether the time limit passed; it was ended then
    std::string how;       ///< as a clause ("while initializing, the plug-in ended the process: Aborted")
};

/// Told of each finished check: why it failed, or an empty text. Called on the thread of `RunCheckProcess`.
using OnCheckMade = std::function<void(const std::string& why)>;

/// Makes the checks from number `first` on, with that many random sequences of requests, in a process of
/// their own, which is ended at `deadline`. Throws `Failure` if no process can be started. One thread at a
/// time.
CheckProcessEnd RunCheckProcess(const std::filesystem::path& bundle, std::size_t first,
                                std::uint64_t sequences, std::chrono::steady_clock::time_point deadline,
                                const OnCheckMade& onMade);

// The process's reports are lines that begin with one of these words and a blank.
inline constexpr char kReportDoing[] = "doing "; ///< what is asked of the plug-in next
inline constexpr char kReportMade[] = "made ";   ///< a check is finished; why it failed, or nothing

} // namespace corvane::commandline
