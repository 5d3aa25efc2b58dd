#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Sweep.h"

namespace corvane {

/// How a family is made by Slurm.
struct SlurmOptions {
    std::vector<std::string> sbatch; ///< further options of `sbatch`
    bool detach = false;             ///< return when the job is submitted
    double taskSeconds = 60;         ///< what a task is to take at least
    std::filesystem::path bundle;    ///< which plug-in tasks are to use; empty: the usual one
};

/// Makes the members of a family that are not made yet by a job array of Slurm, whose tasks are this program,
/// and the manifest. A job that was submitted before and still is at work is waited for instead. `family` is
/// that of `plan`.
///
/// Setting `cancel` ends the waiting, not the job. What tasks that ended too early did not make is told as
/// failed, and made by the next call. Throws `Failure`, which names the remedy, if the batch system can't be
/// asked or refuses, and as `Manifest` does. One at a time in a process.
SweepReport RunSlurmSweep(const Family& family, const Plan& plan, const std::shared_ptr<Bundle>& bundle,
                          const SlurmOptions& options, const SweepListener& listener,
                          const std::atomic<bool>& cancel);

} // namespace corvane
