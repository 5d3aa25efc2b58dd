#include "CheckProcess.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Foundation/ChildProcess.h"

namespace corvane::commandline {

namespace {

constexpr int kReportDescriptor = 3;

/// Characters of the secret: 128 bits.
constexpr std::size_t kSecretSize = 32;
/// Of a text in a report; no clause that people read is longer.
constexpr std::size_t kLongestText = 4000;
/// Of a line that may be a report.
constexpr std::size_t kLongestLine = kLongestText + 100;

/// What makes a line a report. The bundle's code runs in the process that reports: it has to be unable to
/// guess this, and must not find it in the arguments or the environment.
std::string MakeSecret() {
    std::random_device random;
    std::string secret;
    while (secret.size() < kSecretSize) secret += fmt::format("{:08x}", random());
    return secret;
}

/// A connection that, unlike a pipe, can't be opened a second time by way of /proc.
std::pair<FileDescriptor, FileDescriptor> MakeConnection() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category());
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// This program, started anew to make checks. What it prints goes to standard error.
ChildStart StartOf(const std::filesystem::path& bundle, std::size_t first, std::uint64_t sequences,
                   int reports) {
    return {.program = "/proc/self/exe",
            .arguments = {"synthex", "make-checks", std::to_string(first), std::to_string(kReportDescriptor),
                          std::to_string(sequences), "--", bundle.string()},
            .descriptors = {{STDERR_FILENO, STDOUT_FILENO}, {reports, kReportDescriptor}}};
}

/// Takes a process's reports apart. What is no report is passed over, and no more of it is kept than a report
/// may have.
class ReportReader {
  public:
    ReportReader(const std::string& secret, const CheckListener& listener)
        : mDoingStart(secret + CheckReporter::kDoing), mMadeStart(secret + CheckReporter::kMade),
          mListener(listener) {}

    void Take(std::string_view bytes) {
        for (std::size_t end = bytes.find('\n'); end != bytes.npos; end = bytes.find('\n')) {
            Add(bytes.substr(0, end));
            TakeLine(mLine);
            mLine.clear();
            bytes.remove_prefix(end + 1);
        }
        Add(bytes);
    }

    const std::string& Doing() const { return mDoing; }

  private:
    void Add(std::string_view bytes) { mLine += bytes.substr(0, kLongestLine - mLine.size()); }

    void TakeLine(std::string_view line) {
        if (line.starts_with(mDoingStart)) {
            mDoing = line.substr(mDoingStart.size());
            mListener.doing(mDoing);
        }
        if (!line.starts_with(mMadeStart)) return;
        mDoing.clear();
        mListener.made(std::string(line.substr(mMadeStart.size())));
    }

    const std::string mDoingStart, mMadeStart;
    const CheckListener& mListener;
    std::string mLine;
    std::string mDoing;
};

/// The parent of a process; 0 if the process is gone.
pid_t ParentOf(const std::string& process) {
    std::ifstream file("/proc/" + process + "/stat");
    std::string line;
    std::getline(file, line);
    // The second field is the program's name in parentheses and may hold anything; a state of one letter
    // follows.
    const std::size_t name = line.rfind(')');
    pid_t parent = 0;
    if (name != std::string::npos && name + 4 < line.size())
        std::from_chars(line.data() + name + 4, line.data() + line.size(), parent);
    return parent;
}

/// Kills the children that this process has. False if it has none, or may not end them.
bool KillChildren() {
    bool killed = false;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename().string();
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        if (process > 0 && ParentOf(name) == ::getpid()) killed |= ::kill(process, SIGKILL) == 0;
    }
    return killed;
}

/// Whether this process has children; those that have ended are let go.
bool HasChildren() {
    pid_t ended = 0;
    while ((ended = ::waitpid(-1, nullptr, WNOHANG)) > 0) {
    }
    return ended == 0;
}

/// Ends the processes that a bundle left behind, in whatever group or session: they are this process's
/// children now, and what they started becomes so when they end. Does not go on for ever with those that
/// start others faster than they can be ended.
void EndOrphans() {
    constexpr int kRounds = 1000;
    for (int round = 0; round < kRounds && HasChildren() && KillChildren(); ++round)
        ::waitpid(-1, nullptr, 0);
}

/// How a process ended, as a clause.
std::string How(int status, bool timedOut) {
    if (timedOut) return "the time limit passed";
    if (WIFSIGNALED(status))
        return fmt::format("the plug-in ended the process: {}", ::strsignal(WTERMSIG(status)));
    return fmt::format("the plug-in ended the process with exit status {}", WEXITSTATUS(status));
}

} // namespace

CheckProcessEnd RunCheckProcess(const std::filesystem::path& bundle, std::size_t first,
                                std::uint64_t sequences, std::chrono::steady_clock::time_point deadline,
                                const CheckListener& listener) try {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const std::string secret = MakeSecret();
    auto [own, its] = MakeConnection();
    own.Write(std::as_bytes(std::span(secret)));
    ChildProcess process(StartOf(bundle, first, sequences, its.Get()));
    its.Close();
    ReportReader reader(secret, listener);
    ChildOutput reports[] = {{std::move(own), [&](std::string_view bytes) { reader.Take(bytes); }}};
    const bool timedOut = !process.Follow(reports, deadline);
    const int status = process.End().status;
    EndOrphans();

    CheckProcessEnd end{!timedOut && WIFEXITED(status) && WEXITSTATUS(status) == 0, timedOut,
                        How(status, timedOut)};
    if (!reader.Doing().empty()) end.how = fmt::format("while {}, {}", reader.Doing(), end.how);
    return end;
} catch (const std::system_error& error) {
    throw Failure(fmt::format("{}: no process can be started to check it in ({}).", bundle.string(),
                              error.code().message()));
}

CheckReporter::CheckReporter(int descriptor) : mDescriptor(descriptor), mSecret(kSecretSize, '\0') {
    if (mDescriptor.Read(std::as_writable_bytes(std::span(mSecret))) != std::ssize(mSecret))
        ::_exit(EXIT_FAILURE);
}

void CheckReporter::Write(const char* word, std::string text) const {
    std::ranges::replace(text, '\n', ' ');
    // On a line of its own, whatever the bundle wrote before.
    const std::string line = "\n" + mSecret + word + text.substr(0, kLongestText) + "\n";
    // Without the one who started the process, the reports are of no use to anybody.
    if (!mDescriptor.Write(std::as_bytes(std::span(line)))) ::_exit(EXIT_FAILURE);
}

} // namespace corvane::commandline
