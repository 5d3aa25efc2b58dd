#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "Services/Foundation/FileDescriptor.h"

namespace corvane::commandline {

/// How a process that makes checks came to its end.
struct CheckProcessEnd {
    bool inOrder = false;  ///< whether it ended by itself and said that all is well
    bool timedOut = false; ///< whether the time limit passed; it was ended then
    std::string how;       ///< as a clause ("while initializing, the plug-in ended the process: Aborted")
};

/// Who is told of the checks, on the thread of `RunCheckProcess`.
struct CheckListener {
    std::function<void(const std::string& what)> doing; ///< of what is asked of the plug-in next
    std::function<void(const std::string& why)> made;   ///< of each finished check: why it failed, or nothing
};

/// Makes the checks from number `first` on, with that many random sequences of requests, in a process of
/// their own. It is ended at `deadline`, and with it every process that came of it, whatever the bundle does:
/// nothing that is written to this process holds it or fills its memory, and only the code that makes the
/// checks can tell of one. Makes this process the one that inherits orphans. Throws `Failure` if no process
/// can be started. Main thread of a process that has no other children.
CheckProcessEnd RunCheckProcess(const std::filesystem::path& bundle, std::size_t first,
                                std::uint64_t sequences, std::chrono::steady_clock::time_point deadline,
                                const CheckListener& listener);

/// The other end: what the process that makes the checks reports with. One thread at a time.
class CheckReporter {
  public:
    /// Takes over the descriptor that the process was given. To be made before the bundle gets control. Ends
    /// the process if nobody is at the other end.
    explicit CheckReporter(int descriptor);

    /// Says what is asked of the plug-in next. As with the one below, a long text is cut short, and the
    /// process ends if nobody reads.
    void Doing(const std::string& what) const { Write(kDoing, what); }
    /// Says that a check is finished, and why it failed, or nothing.
    void Made(const std::string& why) const { Write(kMade, why); }

    // What a report begins with after the secret. Each is a line.
    static constexpr char kDoing[] = " doing ";
    static constexpr char kMade[] = " made ";

  private:
    void Write(const char* word, std::string text) const;

    FileDescriptor mDescriptor;
    std::string mSecret; // makes a line a report
};

} // namespace corvane::commandline
