#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Services/Foundation/ChildProcess.h"
#include "TestFolder.h"
#include "TestSettings.h"

using corvane::testing::ReadFile;
using corvane::testing::SettingsText;
using corvane::testing::TestFolder;

/// What a process left behind.
struct ProcessResult {
    int status = -1; ///< exit status, or 1000 plus the signal that ended it
    std::string out;
    std::string err;
    std::int64_t peakMiB = 0; ///< of memory in use
};

struct ProcessOptions {
    std::vector<std::pair<std::string, std::string>> environment = {}; ///< added to that of the test
    std::uint64_t addressSpace = 0;                                    ///< limit in bytes; 0 for none
    std::uint64_t fileSize = 0;                                        ///< limit in bytes; 0 for none
    unsigned processes = 0;    ///< limit of processes and threads, as a user who has no others; 0 for none
    bool unprivileged = false; ///< as a user who is not root
    bool terminal = false;     ///< standard error is a terminal
    std::string redirections = {};     ///< of the shell, such as ">&-", on top of the rest
    std::filesystem::path output = {}; ///< where standard output goes; empty: into the result
};

/// A process that is running. Killed if it is not waited for, or takes longer than a minute.
class Process {
  public:
    explicit Process(const std::vector<std::string>& arguments, const ProcessOptions& options = {});
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void Signal(int number) const;
    /// Closes the reading end of its standard output.
    void CloseOutput();
    /// Reads what it says until it ends.
    ProcessResult Wait();

  private:
    ProcessResult mResult;
    corvane::ChildOutput mOutputs[2];
    std::optional<corvane::ChildProcess> mChild;
};

/// The program with these arguments.
std::vector<std::string> Synthex(std::vector<std::string> arguments);
ProcessResult RunSynthex(std::vector<std::string> arguments, const ProcessOptions& options = {});

/// Whether a user who is not root may run the program: not if the tree lies in a folder of root's own.
bool RunsUnprivileged();

/// The path of a sample clip.
std::string Sample(const std::string& name);

/// Expects a run of the program to end with `status`, to print nothing, and to say one line, which begins
/// with "synthex: " and `start` and holds `said`.
void ExpectRefused(const std::vector<std::string>& arguments, int status, const std::string& start,
                   const std::string& said, const ProcessOptions& options = {});

/// `arguments`, and those that work a dialog: actions and answers, each separated by "; ".
std::vector<std::string> WithScript(std::vector<std::string> arguments, const std::string& actions,
                                    const std::string& answers = {});

/// Whether the program was built with the address or thread sanitizer, which need the whole address space.
bool IsSanitized();
