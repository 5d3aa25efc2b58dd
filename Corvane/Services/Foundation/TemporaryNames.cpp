#include "TemporaryNames.h"

#include <charconv>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <span>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "FileDescriptor.h"
#include "NeverDestroyed.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// What names begin with. It tells this run of this system, and of its containers this one, from others that
/// may use the same folder: the numbers of processes mean nothing there.
std::string Beginning() {
    std::string run(8, '0'); // hexadecimal digits are enough of it
    const FileDescriptor file("/proc/sys/kernel/random/boot_id", O_RDONLY);
    if (file) file.Read(std::as_writable_bytes(std::span(run)));
    struct stat container {};
    ::stat("/proc/self/ns/pid", &container);
    return fmt::format(".synthex-{}-{}-", run, container.st_ino);
}

std::string_view WithoutNumber(const fs::path& path) {
    const std::string_view name = path.native();
    return name.substr(0, name.rfind('-') + 1);
}

} // namespace

TemporaryNames& TemporaryNames::Get() {
    static NeverDestroyed<TemporaryNames> names;
    return names.Get();
}

TemporaryNames::TemporaryNames() : mBeginning(Beginning()) {
    std::atexit([] {
        const std::lock_guard lock(Get().mMutex);
        Get().RemoveAll();
    });
    // That may come from a signal handler, in the middle of anything: they stay if the list is in use.
    std::at_quick_exit([] {
        if (Get().mMutex.try_lock()) Get().RemoveAll();
    });
}

void TemporaryNames::RemoveAll() const {
    char path[PATH_MAX]; // there may be no memory to have
    for (const auto& [start, numbers] : mNumbers)
        for (std::uint64_t number = numbers.first; numbers.process == ::getpid() && number < numbers.end;
             ++number) {
            const auto written = fmt::format_to_n(path, sizeof path - 1, "{}{}", start, number);
            *written.out = '\0';
            ::unlink(path);
        }
}

// Not made of the file's own name, which may be as long as a name can be.
std::string TemporaryNames::StartIn(const fs::path& folder) const {
    return folder / fmt::format("{}{}-", mBeginning, ::getpid());
}

fs::path TemporaryNames::OfNumber(const fs::path& folder, std::uint64_t number) const {
    return StartIn(folder) + std::to_string(number);
}

std::uint64_t TemporaryNames::NumberOf(const fs::path& path) {
    const std::string& name = path.native();
    std::uint64_t number = 0;
    std::from_chars(name.data() + WithoutNumber(path).size(), name.data() + name.size(), number);
    return number;
}

fs::path TemporaryNames::Next(const fs::path& folder) {
    const std::lock_guard lock(mMutex);
    Numbers& numbers = mNumbers.try_emplace(StartIn(folder), Numbers{::getpid()}).first->second;
    fs::path path = OfNumber(folder, numbers.end);
    ++numbers.end;
    ++numbers.count;
    return path;
}

void TemporaryNames::Forget(const fs::path& path) {
    const std::lock_guard lock(mMutex);
    const auto found = mNumbers.find(WithoutNumber(path));
    if (found == mNumbers.end()) return;
    Numbers& numbers = found->second;
    if (NumberOf(path) == numbers.first) ++numbers.first;
    if (--numbers.count == 0) numbers.first = numbers.end;
}

bool TemporaryNames::IsAbandoned(std::string_view name) const {
    if (!name.starts_with(mBeginning)) return false;
    name.remove_prefix(mBeginning.size());
    pid_t process = 0;
    std::from_chars(name.data(), name.data() + name.size(), process);
    return process > 0 && ::kill(process, 0) != 0 && errno == ESRCH;
}

void TemporaryNames::Tidy(const fs::path& folder) {
    {
        const std::string own = folder / mBeginning;
        const std::lock_guard lock(mMutex);
        for (auto next = mNumbers.lower_bound(own); next != mNumbers.end() && next->first.starts_with(own);
             ++next)
            if (next->second.count > 0) return;
    }
    // Not the standard library's iterator, which ends the program where memory is short.
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
    while (const dirent* const entry = open ? ::readdir(open.get()) : nullptr)
        if (IsAbandoned(entry->d_name)) ::unlinkat(::dirfd(open.get()), entry->d_name, 0);
}

} // namespace corvane
