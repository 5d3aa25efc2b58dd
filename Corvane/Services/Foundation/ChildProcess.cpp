#include "ChildProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {
namespace {

/// Of one call of the system, in milliseconds: what it takes is 32 bits.
constexpr std::chrono::milliseconds::rep kLongestWait = 3'600'000;

/// Takes what there is of an output, which ends with an error on a terminal.
void TakeFrom(ChildOutput& output) {
    std::array<char, 65536> bytes;
    const ssize_t count = ::read(output.descriptor.Get(), bytes.data(), bytes.size());
    if (count > 0)
        output.take({bytes.data(), static_cast<std::size_t>(count)});
    else if (count == 0 || (errno != EINTR && errno != EAGAIN))
        output.descriptor.Close();
}

} // namespace

ChildProcess::ChildProcess(const ChildStart& start) {
    std::vector<char*> arguments;
    for (const std::string& argument : start.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    for (const auto& [own, its] : start.descriptors) ::posix_spawn_file_actions_adddup2(&actions, own, its);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    const int error =
        ::posix_spawnp(&mId, start.program.c_str(), &actions, &attributes, arguments.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category());
    mWatch = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, mId, 0)));
}

ChildProcess::~ChildProcess() {
    if (mId > 0) End();
}

void ChildProcess::Signal(int number) const {
    ::kill(mId, number);
}

bool ChildProcess::Follow(std::span<ChildOutput> outputs, Clock::time_point deadline) const {
    using std::chrono::milliseconds;
    std::vector<pollfd> waits(outputs.size() + 1);
    for (;;) {
        for (std::size_t i = 0; i < outputs.size(); ++i) waits[i] = {outputs[i].descriptor.Get(), POLLIN, 0};
        waits.back() = {mWatch.Get(), POLLIN, 0};
        // Looked at each time: whoever writes without end is ready each time.
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        const int ready = ::poll(waits.data(), waits.size(),
                                 static_cast<int>(std::min<milliseconds::rep>(left.count(), kLongestWait)));
        if (ready < 0 && errno != EINTR) return false;
        if (ready <= 0) continue;
        if (ready == 1 && waits.back().revents != 0) return true;
        for (std::size_t i = 0; i < outputs.size(); ++i)
            if (waits[i].revents != 0) TakeFrom(outputs[i]);
    }
}

ChildEnd ChildProcess::End() {
    // Also by itself: it may have left its group.
    ::kill(mId, SIGKILL);
    ::kill(-mId, SIGKILL);
    ChildEnd end;
    rusage usage{};
    while (::wait4(mId, &end.status, 0, &usage) < 0 && errno == EINTR) {
    }
    mId = -1;
    end.peakKiB = usage.ru_maxrss;
    return end;
}

std::pair<FileDescriptor, FileDescriptor> MakePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

} // namespace corvane
