#include "CheckProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Engine/Failure.h"

namespace corvane::commandline {

namespace {

constexpr int kReportDescriptor = 3;

/// A descriptor that is closed at the end.
class Descriptor {
  public:
    explicit Descriptor(int number) : mNumber(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return mNumber; }
    void Close() {
        if (mNumber >= 0) ::close(mNumber);
        mNumber = -1;
    }

  private:
    int mNumber;
};

/// Starts this program anew to make checks. It leads a process group of its own, so that what a plug-in
/// starts can be ended with it, and what it prints goes to standard error.
pid_t Spawn(const std::filesystem::path& bundle, std::size_t first, int reports) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, reports, kReportDescriptor);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);

    std::string from = std::to_string(first);
    std::string descriptor = std::to_string(kReportDescriptor);
    std::string path = bundle.string();
    char program[] = "synthex", command[] = "make-checks", end[] = "--";
    char* const argv[] = {program, command, from.data(), descriptor.data(), end, path.data(), nullptr};
    pid_t child = -1;
    const int error = ::posix_spawn(&child, "/proc/self/exe", &actions, &attributes, argv, environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw Failure(
            fmt::format("{}: no process can be started to check it in ({}).", path, std::strerror(error)));
    return child;
}

/// Takes a process's reports apart.
class ReportReader {
  public:
    explicit ReportReader(const OnCheckMade& onMade) : mOnMade(onMade) {}

    /// Reads what is there. Returns false at the end of the reports.
    bool Read(int descriptor) {
        std::array<char, 4096> bytes;
        const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
        if (count <= 0) return count < 0 && (errno == EINTR || errno == EAGAIN);
        mText.append(bytes.data(), static_cast<std::size_t>(count));
        for (std::size_t end = mText.find('\n'); end != std::string::npos; end = mText.find('\n')) {
            TakeLine(mText.substr(0, end));
            mText.erase(0, end + 1);
        }
        return true;
    }

    const std::string& Doing() const { return mDoing; }

  private:
    void TakeLine(std::string_view line) {
        if (line.starts_with(kReportDoing)) mDoing = line.substr(std::strlen(kReportDoing));
        if (!line.starts_with(kReportMade)) return;
        mDoing.clear();
        mOnMade(std::string(line.substr(std::strlen(kReportMade))));
    }

    const OnCheckMade& mOnMade;
    std::string mText;
    std::string mDoing;
};

/// How a process ended, as a clause.
std::string How(int status, bool timedOut) {
    if (timedOut) return "the time limit passed";
    if (WIFSIGNALED(status))
        return fmt::format("the plug-in ended the process: {}", ::strsignal(WTERMSIG(status)));
    return fmt::format("the plug-in ended the process with exit status {}", WEXITSTATUS(status));
}

/// Reads reports until the process is over. Returns false where the time limit passed before that.
bool Follow(const Descriptor& process, Descriptor& reports, std::chrono::steady_clock::time_point deadline,
            ReportReader& reader) {
    using std::chrono::milliseconds;
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waits[] = {{reports.Get(), POLLIN, 0}, {process.Get(), POLLIN, 0}};
        const int ready = ::poll(waits, 2, static_cast<int>(std::max<milliseconds::rep>(left.count(), 0)));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        // A process that goes on without its end of the pipe is waited for; a pipe that others hold open is
        // not.
        if (waits[0].revents != 0 && !reader.Read(reports.Get()))
            reports.Close();
        else if (waits[0].revents == 0 && waits[1].revents != 0)
            return true;
    }
}

} // namespace

CheckProcessEnd RunCheckProcess(const std::filesystem::path& bundle, std::size_t first,
                                std::chrono::steady_clock::time_point deadline, const OnCheckMade& onMade) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw Failure(fmt::format("{}: no pipe can be made to check it through ({}).", bundle.string(),
                                  std::strerror(errno)));
    Descriptor reports(ends[0]);
    Descriptor writing(ends[1]);
    const pid_t child = Spawn(bundle, first, writing.Get());
    writing.Close();
    const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));

    ReportReader reader(onMade);
    const bool timedOut = !Follow(process, reports, deadline, reader);
    ::kill(-child, SIGKILL); // and what the plug-in started
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }

    CheckProcessEnd end{!timedOut && WIFEXITED(status) && WEXITSTATUS(status) == 0, timedOut,
                        How(status, timedOut)};
    if (!reader.Doing().empty()) end.how = fmt::format("while {}, {}", reader.Doing(), end.how);
    return end;
}

} // namespace corvane::commandline
