#pragma once

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace corvane {

/// The names that temporary files of this process have at the moment. They tell which process made a file, so
/// that what a killed one left behind can be told from what another is writing. Any thread.
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
            std::filesystem::path path = folder / Next();
            Remember(path);
            if (make(path)) return path;
            const int error = errno;
            Forget(path);
            errno = error;
            if (error != EEXIST) return {};
        }
    }
    /// The file is gone, or has another name now.
    void Forget(const std::filesystem::path& path);

    /// Removes from `folder` what processes that no longer run left there, unless this process has files
    /// there: then it has looked already. What can't be removed stays.
    void Tidy(const std::filesystem::path& folder);

  private:
    std::string Next();
    void Remember(const std::filesystem::path& path);
    void RemoveAll() const;
    bool IsAbandoned(std::string_view name) const;

    const std::string mBeginning; // of all names that are made while this system runs
    std::mutex mMutex;
    std::map<std::string, pid_t> mPaths; // with the process that made it: this one may be a fork of that
    std::uint64_t mCount = 0;
};

} // namespace corvane
