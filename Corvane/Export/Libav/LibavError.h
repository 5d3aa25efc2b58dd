#pragma once

#include <string>

namespace corvane {

/// libav's own words for an error code. Any thread; never fails.
std::string LibavMessage(int error);

/// As long as one lives, errors that libav and its encoders log are kept for the thread that they log them
/// on, and nothing is printed. There may be any number at a time, on any threads.
class LibavLog {
  public:
    LibavLog();
    ~LibavLog();
    LibavLog(const LibavLog&) = delete;
    LibavLog& operator=(const LibavLog&) = delete;

    /// Forgets what was logged on this thread so far.
    void Clear() const;
    /// The last error that was logged on this thread, or the words for `error` if there was none.
    std::string Reason(int error) const;
};

} // namespace corvane
