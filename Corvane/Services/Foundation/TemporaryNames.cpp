#include "TemporaryNames.h"

#include <charconv>
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
    for (const auto& [path, process] : mPaths)
        if (process == ::getpid()) ::unlink(path.c_str());
}

// Not made of the file's own name, which may be as long as a name can be.
std::string TemporaryNames::Next() {
    const std::lock_guard lock(mMutex);
    return fmt::format("{}{}-{}", mBeginning, ::getpid(), ++mCount);
}

void TemporaryNames::Remember(const fs::path& path) {
    const std::lock_guard lock(mMutex);
    mPaths.emplace(path.native(), ::getpid());
}

void TemporaryNames::Forget(const fs::path& path) {
    const std::lock_guard lock(mMutex);
    mPaths.erase(path.native()); // takes no memory
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
        const auto first = mPaths.lower_bound(own);
        if (first != mPaths.end() && first->first.starts_with(own)) return;
    }
    // Not the standard library's iterator, which ends the program where memory is short.
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
    while (const dirent* const entry = open ? ::readdir(open.get()) : nullptr)
        if (IsAbandoned(entry->d_name)) ::unlinkat(::dirfd(open.get()), entry->d_name, 0);
}

} // namespace corvane
