#pragma once

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace corvane {

/// The names that temporary files of this process have at the moment. They tell which process made a file, so
/// that what a killed one left behind can be told from what another is writing. The rest of a name is a
/// number, so that what is kept of the names in a folder doesn't grow with them. Any thread.
class TemporaryNames {
  public:
    /// Those of this process. When it ends by `exit` or `quick_exit`, files that still have such names are
    /// removed.
    static TemporaryNames& Get();
    /// For `Get`.
    TemporaryNames();

    /// Calls `make(path)`, which makes a file of that name, with hidden names in `folder` until one is free.
    /// Returns that path, which is remembered until `Forget`. Where `make` returns false with another
    /// `errno` than EEXIST, returns an empty path and leaves `errno` as it is.
    template <class Maker>
    std::filesystem::path Make(const std::filesystem::path& folder, const Maker& make) {
        for (;;) {
            std::filesystem::path path = Next(folder);
            if (make(path)) return path;
            const int error = errno;
            Forget(path);
            errno = error;
            if (error != EEXIST) return {};
        }
    }
    /// The file is gone, or has another name now. Takes no memory.
    void Forget(const std::filesystem::path& path);

    /// The number of a name that `Make` returned. Files that are made in a folder one after the other have
    /// numbers one after the other.
    static std::uint64_t NumberOf(const std::filesystem::path& path);
    /// The name in `folder` of that number, as `Make` returned it.
    std::filesystem::path OfNumber(const std::filesystem::path& folder, std::uint64_t number) const;

    /// Removes from `folder` what processes that no longer run left there, unless this process has files
    /// there: then it has looked already. What can't be removed stays.
    void Tidy(const std::filesystem::path& folder);

  private:
    // Those from `first` up to `end` may be in use, and `count` of them are. None is used twice: the name may
    // be taken by a file that a dead process left.
    struct Numbers {
        pid_t process; // that made the files: this one may be a fork of that
        std::uint64_t first = 1;
        std::uint64_t end = 1;
        std::uint64_t count = 0;
    };

    std::filesystem::path Next(const std::filesystem::path& folder);
    std::string StartIn(const std::filesystem::path& folder) const;
    void RemoveAll() const;
    bool IsAbandoned(std::string_view name) const;

    const std::string mBeginning; // of all names that are made while this system runs
    std::mutex mMutex;
    std::map<std::string, Numbers, std::less<>> mNumbers; // by what the paths have before their numbers
};

} // namespace corvane
