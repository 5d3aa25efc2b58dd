#include "Process.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestScript.h"

namespace {

constexpr unsigned kTimeLimit = 60; // seconds
constexpr uid_t kNobody = 65534;

void Limit(int resource, std::uint64_t bytes) {
    const rlimit limit{bytes, bytes};
    if (bytes != 0) ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

[[noreturn]] void Become(const std::vector<std::string>& arguments, const ProcessOptions& options, int out,
                         int err) {
    if (!options.output.empty()) out = ::open(options.output.c_str(), O_WRONLY | O_CLOEXEC);
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    for (const auto& [name, value] : options.environment) ::setenv(name.c_str(), value.c_str(), 1);
    if (options.unprivileged && ::geteuid() == 0 && ::setuid(kNobody) != 0) ::_exit(127);
    Limit(RLIMIT_AS, options.addressSpace);
    Limit(RLIMIT_FSIZE, options.fileSize);
    Limit(RLIMIT_CORE, 0);
    ::alarm(kTimeLimit); // stays over exec
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
}

/// Opens the two ends of a terminal.
void OpenTerminal(int (&ends)[2]) {
    ends[0] = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (ends[0] < 0 || ::grantpt(ends[0]) != 0 || ::unlockpt(ends[0]) != 0)
        throw std::runtime_error("no terminal");
    ends[1] = ::open(::ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const ProcessOptions& options) {
    int out[2], err[2];
    if (::pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    if (options.terminal)
        OpenTerminal(err);
    else if (::pipe2(err, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    mChild = ::fork();
    if (mChild == 0) Become(arguments, options, out[1], err[1]);
    ::close(out[1]);
    ::close(err[1]);
    mOut = out[0];
    mErr = err[0];
}

Process::~Process() {
    if (mChild > 0) {
        ::kill(mChild, SIGKILL);
        Wait();
    }
}

void Process::Signal(int number) const {
    ::kill(mChild, number);
}

void Process::CloseOutput() {
    ::close(std::exchange(mOut, -1));
}

ProcessResult Process::Wait() {
    ProcessResult result;
    std::array<char, 65536> bytes;
    while (mOut >= 0 || mErr >= 0) {
        pollfd waits[] = {{mOut, POLLIN, 0}, {mErr, POLLIN, 0}};
        ::poll(waits, 2, -1);
        const auto take = [&](const pollfd& wait, int& descriptor, std::string& text) {
            if (wait.revents == 0) return;
            // A terminal without a writer is an error rather than an end.
            const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
            if (count > 0)
                text.append(bytes.data(), static_cast<std::size_t>(count));
            else
                ::close(std::exchange(descriptor, -1));
        };
        take(waits[0], mOut, result.out);
        take(waits[1], mErr, result.err);
    }
    int status = 0;
    rusage usage{};
    ::wait4(mChild, &status, 0, &usage);
    mChild = -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    result.peakMiB = usage.ru_maxrss / 1024;
    return result;
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
