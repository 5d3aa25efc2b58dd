#include "Sweep/OpenFamily.h"
#include "Sweep/SplitClip.h"
#include "SweepModule.h"

namespace corvane {
namespace {

class Module final : public SweepModule {
  public:
    Plan Read(const std::filesystem::path& file) const override { return ReadPlan(file); }
    std::string Save(const Plan& plan, const std::filesystem::path& file) const override {
        return SavePlan(plan, file);
    }
    std::string Schema() const override { return PlanSchema(); }
    void List(const Plan& plan, const std::shared_ptr<Bundle>& bundle, bool json,
              const std::function<void(const std::string&)>& print) const override {
        if (plan.split > 0)
            ListFamily(SplitClip(plan, bundle).Parts(), json, print);
        else
            ListFamily(OpenFamily(plan, bundle), json, print);
    }
    SweepReport Run(const Plan& plan, const std::shared_ptr<Bundle>& bundle, const SweepOptions& options,
                    const SweepListener& listener, const std::atomic<bool>& cancel) const override {
        if (plan.split > 0) return SplitClip(plan, bundle).Run(options, listener, cancel);
        return RunSweep(OpenFamily(plan, bundle), bundle, options, listener, cancel);
    }
    SweepReport RunSlurm(const Plan& plan, const std::shared_ptr<Bundle>& bundle, const SlurmOptions& options,
                         const SweepListener& listener, const std::atomic<bool>& cancel) const override {
        if (plan.split > 0) return SplitClip(plan, bundle).RunSlurm(options, listener, cancel);
        return RunSlurmSweep(OpenFamily(plan, bundle), plan, bundle, options, listener, cancel);
    }
    CheckReport Check(const std::filesystem::path& manifest,
                      const std::function<void(std::int64_t done, std::int64_t total)>& progress,
                      const std::atomic<bool>& cancel) const override {
        return CheckManifest(manifest, progress, cancel);
    }
    std::vector<MemberVideo> Find(const std::filesystem::path& manifest,
                                  const std::filesystem::path& folder) const override {
        return FindVideos(manifest, folder);
    }
};

} // namespace
} // namespace corvane

/// The module's one function; see `SweepModule.h`.
extern "C" __attribute__((visibility("default"))) const corvane::SweepModule* CorvaneSweepModule() {
    static const corvane::Module sModule;
    return &sModule;
}
