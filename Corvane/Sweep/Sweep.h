#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Engine/Bundle.h"
#include "Family.h"

namespace corvane {

/// How a family is to be made.
struct SweepOptions {
    /// The first and the last member to make, both included, from 0. Their outputs and entries are written,
    /// and the manifest is not touched, so that many processes may do that side by side. Empty: all members,
    /// and the manifest.
    std::optional<std::pair<std::int64_t, std::int64_t>> only;
    /// Members to make at once. 0: as many as pays, which is two a processor, or as many as memory is free
    /// for.
    unsigned jobs = 0;
};

/// How far along it is.
struct SweepStatus {
    /// What is counted.
    enum class Unit {
        kFrames,       ///< that are to be made
        kMembers,      ///< of the family
        kJoinedFrames, ///< of parts that are put together
    };
    std::int64_t done = 0;
    std::int64_t total = 0;
    Unit unit = Unit::kFrames;
};

/// Who is told of it, on the thread of `RunSweep`.
struct SweepListener {
    std::function<void(const SweepStatus&)> progress;        ///< a few times a second
    std::function<void(const std::string& sentence)> failed; ///< of each failure, as soon as it is known
};

/// What came of it.
struct SweepReport {
    std::int64_t members = 0; ///< that were to be made
    bool areParts = false;    ///< whether these are parts of one clip
    std::filesystem::path manifest;
    std::int64_t made = 0;
    std::int64_t kept = 0;           ///< were made before
    std::vector<std::string> failed; ///< a sentence for each member or task that did not succeed
    std::string stopped;             ///< why the rest was not tried, as a sentence; empty if all of it was
    std::string job;                 ///< of the batch system, if it is still at work
    bool cancelled = false;
};

/// Makes the members of a family that are not made yet, several at once, and its manifest. Setting `cancel`,
/// from any thread or a signal handler, ends it soon; what is made is kept. Throws `Failure` if nothing can
/// be made at all, as `Manifest` does, and `UsageFailure` if there is no such member. One at a time in a
/// process.
SweepReport RunSweep(const Family& family, const std::shared_ptr<Bundle>& bundle, const SweepOptions& options,
                     const SweepListener& listener, const std::atomic<bool>& cancel);

} // namespace corvane
