#include "Process.h"

#include <chrono>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestScript.h"

namespace {

using corvane::FileDescriptor;

/// The command that gives `program` what the options say: the system has a program for each.
std::vector<std::string> Command(const std::vector<std::string>& program, const ProcessOptions& options) {
    // A shell has what it starts in the background ignore SIGINT.
    std::vector<std::string> command = {"env", "--default-signal"};
    for (const auto& [name, value] : options.environment) command.push_back(name + "=" + value);
    if (options.addressSpace != 0 || options.fileSize != 0) command.push_back("prlimit");
    if (options.addressSpace != 0) command.push_back(fmt::format("--as={}", options.addressSpace));
    if (options.fileSize != 0) command.push_back(fmt::format("--fsize={}", options.fileSize));
    const bool fewProcesses = options.processes != 0;
    if ((options.unprivileged || fewProcesses) && ::geteuid() == 0)
        command.insert(command.end(), {"setpriv", fewProcesses ? "--reuid=65533" : "--reuid=65534"});
    if (fewProcesses)
        command.insert(command.end(), {"prlimit", fmt::format("--nproc={}", options.processes)});
    if (!options.redirections.empty())
        command.insert(command.end(), {"sh", "-c", "exec \"$@\" " + options.redirections, "sh"});
    command.insert(command.end(), program.begin(), program.end());
    return command;
}

/// The two ends of a terminal.
std::pair<FileDescriptor, FileDescriptor> MakeTerminal() {
    FileDescriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!master || ::grantpt(master.Get()) != 0 || ::unlockpt(master.Get()) != 0)
        throw std::runtime_error("no terminal");
    return {std::move(master),
            FileDescriptor(::open(::ptsname(master.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC))};
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const ProcessOptions& options) {
    const rlimit none{};
    ::setrlimit(RLIMIT_CORE, &none); // for the children of this process
    auto [outRead, out] = corvane::MakePipe();
    auto [errRead, err] = options.terminal ? MakeTerminal() : corvane::MakePipe();
    if (!options.output.empty()) out = FileDescriptor(::open(options.output.c_str(), O_WRONLY | O_CLOEXEC));
    const std::vector<std::string> command = Command(arguments, options);
    mChild.emplace(
        corvane::ChildStart{command[0], command, {{out.Get(), STDOUT_FILENO}, {err.Get(), STDERR_FILENO}}});
    mOutputs[0] = {std::move(outRead), [this](std::string_view bytes) { mResult.out += bytes; }};
    mOutputs[1] = {std::move(errRead), [this](std::string_view bytes) { mResult.err += bytes; }};
}

void Process::Signal(int number) const {
    mChild->Signal(number);
}

void Process::CloseOutput() {
    mOutputs[0].descriptor.Close();
}

ProcessResult Process::Wait() {
    mChild->Follow(mOutputs, std::chrono::steady_clock::now() + std::chrono::minutes(1));
    const auto [status, peakKiB] = mChild->End();
    mResult.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    mResult.peakMiB = peakKiB / 1024;
    return std::move(mResult);
}

std::vector<std::string> Synthex(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), SYNTHEX_BUILD_DIR "/bin/synthex");
    return arguments;
}

ProcessResult RunSynthex(std::vector<std::string> arguments, const ProcessOptions& options) {
    return Process(Synthex(std::move(arguments)), options).Wait();
}

bool RunsUnprivileged() {
    return RunSynthex({"--version"}, {.unprivileged = true}).status == 0;
}

std::string Sample(const std::string& name) {
    return std::string(SYNTHEX_SOURCE_DIR "/Samples/") + name + ".synthex";
}

void ExpectRefused(const std::vector<std::string>& arguments, int status, const std::string& start,
                   const std::string& said, const ProcessOptions& options) {
    const ProcessResult result = RunSynthex(arguments, options);
    const std::string trace = testing::PrintToString(arguments);
    EXPECT_EQ(result.status, status) << trace;
    EXPECT_EQ(result.out, "") << trace;
    EXPECT_THAT(result.err,
                testing::AllOf(testing::StartsWith("synthex: " + start), testing::HasSubstr(said)))
        << trace;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << trace << result.err;
}

std::vector<std::string> WithScript(std::vector<std::string> arguments, const std::string& actions,
                                    const std::string& answers) {
    for (const std::string& action : corvane::testing::Parts(actions))
        arguments.insert(arguments.end(), {"--do", action});
    for (const std::string& answer : corvane::testing::Parts(answers))
        arguments.insert(arguments.end(), {"--answer", answer});
    return arguments;
}

bool IsSanitized() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#else
    return false;
#endif
}
