#pragma once

#include <string>

namespace corvane {

/// libav's own words for an error code.
std::string LibavMessage(int error);

/// While it lives, keeps what libav and its encoders log as errors and lets nothing through to standard
/// error. One at a time in a process.
class LibavLog {
  public:
    LibavLog();
    ~LibavLog();
    LibavLog(const LibavLog&) = delete;
    LibavLog& operator=(const LibavLog&) = delete;

    /// The last error that was logged, or else the words for `error`.
    std::string Reason(int error) const;
};

} // namespace corvane
