#pragma once

#include <string>

namespace corvane {

/// libav's own words for an error code.
std::string LibavMessage(int error);

/// While one lives, what libav and its encoders log as errors is kept for the thread that they log it on, and
/// nothing gets through to standard error. Any number at a time.
class LibavLog {
  public:
    LibavLog();
    ~LibavLog();
    LibavLog(const LibavLog&) = delete;
    LibavLog& operator=(const LibavLog&) = delete;

    /// The last error that was logged on this thread, or else the words for `error`.
    std::string Reason(int error) const;
};

} // namespace corvane
