#include "Sweep/OpenFamily.h"
#include "SweepModule.h"

namespace corvane {
namespace {

class Module final : public SweepModule {
  public:
    Plan Read(const std::filesystem::path& file) const override { return ReadPlan(file); }
    std::string Save(const Plan& plan, const std::filesystem::path& file) const override {
        return SavePlan(plan, file);
    }
    void List(const Plan& plan, const std::shared_ptr<Bundle>& bundle, bool json,
              const std::function<void(const std::string&)>& print) const override {
        ListFamily(OpenFamily(plan, bundle), json, print);
    }
    SweepReport Run(const Plan& plan, const std::shared_ptr<Bundle>& bundle, const SweepOptions& options,
                    const SweepListener& listener, const std::atomic<bool>& cancel) const override {
        return RunSweep(OpenFamily(plan, bundle), bundle, options, listener, cancel);
    }
    SweepReport RunSlurm(const Plan& plan, const std::shared_ptr<Bundle>& bundle, const SlurmOptions& options,
                         const SweepListener& listener, const std::atomic<bool>& cancel) const override {
        return RunSlurmSweep(OpenFamily(plan, bundle), plan, bundle, options, listener, cancel);
    }
    CheckReport Check(const std::filesystem::path& manifest,
                      const std::function<void(std::int64_t done, std::int64_t total)>& progress,
                      const std::atomic<bool>& cancel) const override {
        return CheckManifest(manifest, progress, cancel);
    }
};

} // namespace
} // namespace corvane

/// The module's one function; see `SweepModule.h`.
extern "C" __attribute__((visibility("default"))) const corvane::SweepModule* CorvaneSweepModule() {
    static const corvane::Module sModule;
    return &sModule;
}
