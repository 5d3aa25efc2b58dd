#pragma once

#include <chrono>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "FileDescriptor.h"

namespace corvane {

/// What a process is started with.
struct ChildStart {
    std::string program;                          ///< a path, or a name that is looked for on PATH
    std::vector<std::string> arguments;           ///< the program's own name first
    std::vector<std::pair<int, int>> descriptors; ///< what it gets of this process's, and as which of its own
};

/// How a process ended, and what it took.
struct ChildEnd {
    int status = 0;           ///< as `waitpid` tells it
    std::int64_t peakKiB = 0; ///< of memory in use
};

/// The reading end of what a process writes.
struct ChildOutput {
    FileDescriptor descriptor;                  ///< none after its end
    std::function<void(std::string_view)> take; ///< gets the bytes as they come
};

/// Another program, running. It leads a process group of its own, so that what it starts can be ended with
/// it; it reads nothing from standard input. One thread at a time.
class ChildProcess {
  public:
    using Clock = std::chrono::steady_clock;

    /// Starts it. Throws `std::system_error` if that can't be done.
    explicit ChildProcess(const ChildStart& start);
    /// Ends it, as `End` does.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Sends it a signal; the others of its group get none.
    void Signal(int number) const;

    /// Reads `outputs` until the process has ended and what it wrote is read; an output that others hold open
    /// is not waited for. Returns false if `deadline` comes before, however much is written.
    bool Follow(std::span<ChildOutput> outputs, Clock::time_point deadline) const;

    /// Kills it and what is left of its group, and returns how it ended. Once.
    ChildEnd End();

  private:
    pid_t mId = -1;
    FileDescriptor mWatch; // becomes readable when it ends
};

/// The two ends of a new pipe, the reading one first; neither is for child processes unless it is handed to
/// them. Throws `std::system_error` if there can be none.
std::pair<FileDescriptor, FileDescriptor> MakePipe();

} // namespace corvane
