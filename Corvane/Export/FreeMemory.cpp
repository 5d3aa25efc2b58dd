#include "FreeMemory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

// The number at the beginning of a file of the system's; nothing if there is none, or "max".
std::optional<std::uint64_t> NumberIn(const fs::path& path) {
    std::ifstream file(path);
    std::uint64_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

// /proc/meminfo has lines such as "MemAvailable:    1024 kB".
std::uint64_t OfSystem() {
    std::ifstream file("/proc/meminfo");
    std::string word;
    std::uint64_t kibibytes = 0;
    while (file >> word)
        if (word == "MemAvailable:" && file >> kibibytes) return kibibytes * 1024;
    return kNoLimit;
}

// Every group from the process's own up to the root may have a limit (control groups, version 2).
std::uint64_t OfControlGroups() {
    std::ifstream file("/proc/self/cgroup");
    std::string line;
    std::uint64_t least = kNoLimit;
    while (std::getline(file, line)) {
        if (!line.starts_with("0::/")) continue;
        fs::path group = "/sys/fs/cgroup" + line.substr(3);
        for (; group.native().size() >= sizeof "/sys/fs/cgroup" - 1; group = group.parent_path()) {
            const auto most = NumberIn(group / "memory.max"), used = NumberIn(group / "memory.current");
            if (most && used) least = std::min(least, *most - std::min(*most, *used));
        }
    }
    return least;
}

std::uint64_t OfAddressSpace() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kNoLimit;
    const auto pages = NumberIn("/proc/self/statm");
    const std::uint64_t used = pages.value_or(0) * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    return limit.rlim_cur - std::min<std::uint64_t>(limit.rlim_cur, used);
}

} // namespace

std::uint64_t FreeMemory() {
    return std::min({OfSystem(), OfControlGroups(), OfAddressSpace()});
}

} // namespace corvane
