#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>

#include "Engine/Clip.h"
#include "Family.h"
#include "Manifest.h"
#include "Slurm.h"
#include "Sweep.h"

namespace corvane {

/// A clip that is made in parts, each with some of its frames, which are joined without encoding again. The
/// parts are a family of their own, made as others are, in a folder below that of the entries. The output,
/// its entry and the manifest are those of the clip in one piece. One thread.
class SplitClip {
  public:
    /// Divides the one clip of a plan, whose `split` is above 0. Throws as `OpenFamily` and `DivideExport`
    /// do, and `UsageFailure` if the plan has several members.
    SplitClip(const Plan& plan, const std::shared_ptr<Bundle>& bundle);

    /// The parts, as members.
    const Family& Parts() const { return *mParts; }

    /// Makes the parts that are not made yet, and, unless `options` ask for some of the parts, joins them.
    /// Otherwise as `RunSweep`; throws as `JoinExport`, too.
    SweepReport Run(const SweepOptions& options, const SweepListener& listener,
                    const std::atomic<bool>& cancel) const;
    /// The same by a job array, as `RunSlurmSweep`; the parts are joined here.
    SweepReport RunSlurm(const SlurmOptions& options, const SweepListener& listener,
                         const std::atomic<bool>& cancel) const;

  private:
    SweepReport Make(bool whole, const std::function<SweepReport()>& makeParts, const SweepListener& listener,
                     const std::atomic<bool>& cancel) const;
    void PrepareFolders(Manifest& manifest) const;
    bool Join(Manifest& manifest, const SweepListener& listener, const std::atomic<bool>& cancel) const;

    const std::shared_ptr<Bundle> mBundle;
    const Family mWhole;
    const Member mMember; // of it
    std::unique_ptr<Clip> mClip;
    std::filesystem::path mFolder; // of the parts
    bool mInPlace = false;         // whether they are files of the output itself
    Plan mPlan;                    // of the parts
    std::unique_ptr<Family> mParts;
};

} // namespace corvane
