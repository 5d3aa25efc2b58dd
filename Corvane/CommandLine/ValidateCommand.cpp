#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <span>
#include <string>

#include <sys/prctl.h>

#include <fmt/format.h>

#include "CheckProcess.h"
#include "Commands.h"
#include "Console.h"
#include "Engine/Bundle.h"
#include "Engine/Failure.h"
#include "ProgressBar.h"
#include "Validate/Checks.h"

namespace corvane::commandline {

namespace {

constexpr char kLastSentence[] = "The process that loaded the bundle ends by itself.";

/// Counts and prints results as they come.
class Results {
  public:
    void Add(std::string_view sentence, const std::string& why) {
        ++mMade;
        if (why.empty()) return Say(fmt::format("pass  {}", sentence));
        ++mFailed;
        Say(fmt::format("FAIL  {}: {}.", sentence.substr(0, sentence.size() - 1), why));
    }

    /// Shows what is being done.
    void Doing(const std::string& what) { mProgress.Update(what); }

    /// Prints the sum. Returns the exit status.
    int Finish(std::size_t wanted) {
        if (mFailed == 0)
            Say(fmt::format("All {} checks passed.", mMade));
        else if (mMade == wanted)
            Say(fmt::format("{} of {} checks failed.", mFailed, wanted));
        else
            Say(fmt::format("{} of {} checks failed; {} could not be made.", mFailed, wanted,
                            wanted - mMade));
        return mFailed == 0 ? kExitDone : kExitFailed;
    }

  private:
    /// At once: a person watches, and the checks that follow may take long.
    void Say(const std::string& line) {
        mProgress.Wipe();
        PrintLine(line);
        FlushOutput();
    }

    ProgressBar mProgress{true};
    std::size_t mMade = 0;
    std::size_t mFailed = 0;
};

/// Makes all checks. After one that ended the process, the rest are made in a new one.
void MakeAll(const std::filesystem::path& bundle, std::uint64_t sequences,
             std::chrono::steady_clock::time_point deadline, Results& results) {
    const std::span<const Check> checks = AllChecks();
    std::size_t next = 0;
    bool stop = false;
    const auto doing = [&](const std::string& what) { results.Doing(what); };
    const auto take = [&](const std::string& why) {
        if (next == checks.size()) return;
        stop = !why.empty() && checks[next].essential;
        results.Add(checks[next++].sentence, why);
    };
    while (!stop && next < checks.size()) {
        const CheckProcessEnd end = RunCheckProcess(bundle, next, sequences, deadline, {doing, take});
        if (stop) return;
        if (next == checks.size()) return results.Add(kLastSentence, end.inOrder ? "" : end.how);
        take(end.how);
        if (end.timedOut) return;
    }
}

/// Makes one check. Returns why it failed, or an empty text.
std::string Make(const Check& check, CheckRun& run) {
    try {
        check.make(run);
    } catch (const std::exception& exception) {
        std::string_view why = exception.what();
        if (why.ends_with('.')) why.remove_suffix(1);
        run.Fail(std::string(why));
    }
    return run.WhyFailed();
}

} // namespace

int RunValidate(const ValidateRequest& request) {
    const std::filesystem::path bundle = Bundle::Find(request.bundle);
    Results results;
    MakeAll(bundle, request.sequences, std::chrono::steady_clock::now() + request.timeLimit, results);
    return results.Finish(AllChecks().size() + 1);
}

int RunChecks(const ChecksRequest& request) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const CheckReporter reporter(request.reports);
    for (const Check& check : AllChecks().subspan(std::min(request.first, AllChecks().size()))) {
        CheckRun run(request.bundle, request.sequences,
                     [&](const std::string& what) { reporter.Doing(what); });
        const std::string why = Make(check, run);
        reporter.Made(why);
        if (check.essential && !why.empty()) break;
    }
    return kExitDone;
}

} // namespace corvane::commandline
