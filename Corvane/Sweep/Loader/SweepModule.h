#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Sweep/Check.h"
#include "Sweep/FamilyVideos.h"
#include "Sweep/Plan.h"
#include "Sweep/Slurm.h"
#include "Sweep/Sweep.h"

namespace corvane {

/// What the module that makes families can do. An object of it lives as long as the program.
class SweepModule {
  public:
    virtual ~SweepModule() = default;

    /// `ReadPlan`.
    virtual Plan Read(const std::filesystem::path& file) const = 0;
    /// `SavePlan`.
    [[nodiscard]] virtual std::string Save(const Plan& plan, const std::filesystem::path& file) const = 0;
    /// `PlanSchema`.
    virtual std::string Schema() const = 0;
    /// `ListFamily` of what `OpenFamily` makes of the plan, or of its parts if the plan splits its clip.
    virtual void List(const Plan& plan, const std::shared_ptr<Bundle>& bundle, bool json,
                      const std::function<void(const std::string&)>& print) const = 0;
    /// `RunSweep` of the same, or `SplitClip::Run`.
    virtual SweepReport Run(const Plan& plan, const std::shared_ptr<Bundle>& bundle,
                            const SweepOptions& options, const SweepListener& listener,
                            const std::atomic<bool>& cancel) const = 0;
    /// `RunSlurmSweep` of the same, or `SplitClip::RunSlurm`.
    virtual SweepReport RunSlurm(const Plan& plan, const std::shared_ptr<Bundle>& bundle,
                                 const SlurmOptions& options, const SweepListener& listener,
                                 const std::atomic<bool>& cancel) const = 0;
    /// `CheckManifest`.
    virtual CheckReport Check(const std::filesystem::path& manifest,
                              const std::function<void(std::int64_t done, std::int64_t total)>& progress,
                              const std::atomic<bool>& cancel) const = 0;
    /// `FindVideos`.
    virtual std::vector<MemberVideo> Find(const std::filesystem::path& manifest,
                                          const std::filesystem::path& folder) const = 0;
};

/// The name of the module's one function, which is of type `SweepModuleFunction`.
inline constexpr const char* kSweepModuleName = "CorvaneSweepModule";
/// Tells the module's object.
using SweepModuleFunction = const SweepModule*();

} // namespace corvane
