#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace corvane {

/// What became of a family since it was made.
struct CheckReport {
    std::int64_t members = 0;          ///< in the manifest
    std::int64_t expected = 0;         ///< of the family
    std::vector<std::string> problems; ///< what is missing or changed, a sentence each
    std::vector<std::string>
        others; ///< files in the folders of the family that the manifest does not tell of
    bool cancelled = false;
};

/// Looks whether all that a manifest tells of is there and unchanged: settings files, and outputs by their
/// size and bytes. `manifest` may be its folder. Throws `Failure` if there is none, or if it is of a newer
/// version. `progress` is told of the members looked at. Any thread.
CheckReport CheckManifest(const std::filesystem::path& manifest,
                          const std::function<void(std::int64_t done, std::int64_t total)>& progress,
                          const std::atomic<bool>& cancel);

} // namespace corvane
