#include "CheckProcess.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <string_view>
#include <system_error>

#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Foundation/ChildProcess.h"

namespace corvane::commandline {

namespace {

constexpr int kReportDescriptor = 3;

/// This program, started anew to make checks. What it prints goes to standard error.
ChildStart StartOf(const std::filesystem::path& bundle, std::size_t first, std::uint64_t sequences,
                   int reports) {
    return {.program = "/proc/self/exe",
            .arguments = {"synthex", "make-checks", std::to_string(first), std::to_string(kReportDescriptor),
                          std::to_string(sequences), "--", bundle.string()},
            .descriptors = {{STDERR_FILENO, STDOUT_FILENO}, {reports, kReportDescriptor}}};
}

/// Takes a process's reports apart.
class ReportReader {
  public:
    explicit ReportReader(const OnCheckMade& onMade) : mOnMade(onMade) {}

    void Take(std::string_view bytes) {
        mText += bytes;
        for (std::size_t end = mText.find('\n'); end != std::string::npos; end = mText.find('\n')) {
            TakeLine(mText.substr(0, end));
            mText.erase(0, end + 1);
        }
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

} // namespace

CheckProcessEnd RunCheckProcess(const std::filesystem::path& bundle, std::size_t first,
                                std::uint64_t sequences, std::chrono::steady_clock::time_point deadline,
                                const OnCheckMade& onMade) try {
    auto [reading, writing] = MakePipe();
    ChildProcess process(StartOf(bundle, first, sequences, writing.Get()));
    writing.Close();
    ReportReader reader(onMade);
    ChildOutput reports[] = {{std::move(reading), [&](std::string_view bytes) { reader.Take(bytes); }}};
    const bool timedOut = !process.Follow(reports, deadline);
    const int status = process.End().status;

    CheckProcessEnd end{!timedOut && WIFEXITED(status) && WEXITSTATUS(status) == 0, timedOut,
                        How(status, timedOut)};
    if (!reader.Doing().empty()) end.how = fmt::format("while {}, {}", reader.Doing(), end.how);
    return end;
} catch (const std::system_error& error) {
    throw Failure(fmt::format("{}: no process can be started to check it in ({}).", bundle.string(),
                              error.code().message()));
}

} // namespace corvane::commandline
