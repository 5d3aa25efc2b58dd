#pragma once

#include <string>

struct AVDictionary;

namespace corvane {

/// libav's own words for an error code. Any thread; never fails.
std::string LibavMessage(int error);

/// Returns what a function of libav returned, unless that was "no memory": then `std::bad_alloc` is thrown.
/// Any thread.
int WithMemory(int result);

/// Options for a call of libav. One thread.
class LibavOptions {
  public:
    LibavOptions() = default;
    ~LibavOptions();
    LibavOptions(const LibavOptions&) = delete;
    LibavOptions& operator=(const LibavOptions&) = delete;

    /// Adds an option, or replaces its value. Throws `std::bad_alloc`.
    void Set(const std::string& name, const std::string& value);
    /// For the call, which takes out the options that it knows.
    AVDictionary** Get() { return &mDictionary; }
    /// The name of an option that is left; empty if none is.
    std::string Left() const;

  private:
    AVDictionary* mDictionary = nullptr;
};

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
