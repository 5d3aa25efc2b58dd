#pragma once

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

namespace corvane::testing {

/// A folder of a test's own, empty at first and gone with it. Other users may look into it.
class TestFolder {
  public:
    TestFolder() {
        std::string name = std::filesystem::temp_directory_path() / "synthex-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        mPath = name;
        std::filesystem::permissions(mPath, std::filesystem::perms(0755));
    }
    ~TestFolder() { std::filesystem::remove_all(mPath); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return mPath / name; }
    const std::filesystem::path& Path() const { return mPath; }
    /// Makes a file in it.
    std::filesystem::path Write(const std::string& name, std::string_view text) const {
        std::ofstream(mPath / name, std::ios::binary) << text;
        return mPath / name;
    }
    /// Names of everything in it, sorted.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mPath))
            names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

  private:
    std::filesystem::path mPath;
};

/// Empty if there is no such file.
inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Lets no file of the process grow beyond some bytes, as a full disk would, for the length of a scope.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes) : mHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &mLimit);
        const rlimit few{bytes, mLimit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &few);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &mLimit);
        std::signal(SIGXFSZ, mHandler);
    }

  private:
    rlimit mLimit{};
    void (*mHandler)(int);
};

/// Makes root a user who may not write everywhere, for the length of a scope.
class AsNobody {
  public:
    AsNobody() {
        if (mUser == 0 && ::setresuid(65534, 65534, 0) != 0) throw std::runtime_error("root stays root");
    }
    ~AsNobody() {
        if (::setresuid(mUser, mUser, mUser) != 0) std::abort();
    }

  private:
    const uid_t mUser = ::getuid();
};

} // namespace corvane::testing
