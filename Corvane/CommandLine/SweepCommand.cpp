#include <algorithm>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/Failure.h"
#include "JSONLine.h"
#include "ProgressBar.h"
#include "Services/Foundation/AtomicFile.h"
#include "Sweep/Loader/SweepLoader.h"

namespace corvane::commandline {

namespace {

Plan PlanOf(const SweepRequest& request, const SweepModule& module) {
    if (!request.planFile.empty()) {
        Plan plan = module.Read(request.planFile);
        if (request.plan.split != 0) plan.split = request.plan.split;
        return plan;
    }
    if (request.plan.base.empty() || request.plan.output.empty())
        throw UsageFailure("BASE and OUT are required, or --plan or --check; see 'synthex sweep --help'");
    return request.plan;
}

int CheckFamily(const SweepRequest& request, const SweepModule& module) {
    EndingSignal::Take();
    CheckReport report;
    {
        ProgressBar bar(!request.quiet);
        const auto progress = [&](std::int64_t done, std::int64_t total) {
            bar.Update(fmt::format("checked {} of {} members", done, total));
        };
        report = module.Check(request.check, progress, EndingSignal::Cancelled());
    }
    if (request.json) {
        Print(JSONLine(
            {{"members", report.members}, {"problems", report.problems}, {"others", report.others}}));
    } else {
        for (const std::string& problem : report.problems) PrintLine(problem);
        for (const std::string& other : report.others)
            if (!request.quiet) PrintLine(fmt::format("{}: is not in the manifest", other));
        if (!request.quiet && report.problems.empty())
            PrintLine(fmt::format("{}: all {} members are there and unchanged", request.check.string(),
                                  report.members));
    }
    if (report.cancelled) return EndingSignal::ExitStatus();
    return report.problems.empty() ? kExitDone : kExitFailed;
}

const char* Noun(const SweepReport& report) {
    return report.areParts ? "parts" : "members";
}

void PrintReport(const SweepReport& report, bool json, bool quiet) {
    if (json)
        Print(JSONLine({{"manifest", report.manifest.string()},
                        {"members", report.members},
                        {"made", report.made},
                        {"kept", report.kept},
                        {"failed", report.failed},
                        {"stopped", report.stopped}}));
    else if (!quiet)
        PrintLine(fmt::format("{}: {} of {} {}, {} of them made now", report.manifest.string(),
                              report.made + report.kept, report.members, Noun(report), report.made));
    if (!report.stopped.empty()) PrintError(report.stopped);
}

int Tell(const SweepRequest& request, const SweepReport& report) {
    PrintReport(report, request.json, request.quiet);
    if (report.cancelled) {
        PrintError(fmt::format("{}: the sweep was cancelled; run it again, and it goes on from here",
                               report.manifest.string()));
        return EndingSignal::ExitStatus();
    }
    return report.failed.empty() && report.stopped.empty() ? kExitDone : kExitFailed;
}

void Show(ProgressBar& bar, const SweepStatus& status) {
    switch (status.unit) {
    case SweepStatus::Unit::kFrames: return bar.Update(status.done, status.total);
    case SweepStatus::Unit::kMembers:
        return bar.Update(fmt::format("made {} of {} members", status.done, status.total));
    case SweepStatus::Unit::kJoinedFrames:
        return bar.Update(fmt::format("joined {} of {} frames", status.done, status.total));
    }
}

SweepReport MakeMembers(const SweepRequest& request, const Plan& plan, const SweepModule& module) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    EndingSignal::Take();
    ProgressBar bar(!request.quiet);
    const SweepListener listener{[&](const SweepStatus& status) { Show(bar, status); },
                                 [&](const std::string& sentence) {
                                     bar.Wipe();
                                     PrintError(sentence);
                                 }};
    if (!request.slurm) return module.Run(plan, bundle, request.options, listener, EndingSignal::Cancelled());
    SlurmOptions options = request.slurmOptions;
    options.bundle = request.bundle;
    return module.RunSlurm(plan, bundle, options, listener, EndingSignal::Cancelled());
}

int MakeFamily(const SweepRequest& request, const Plan& plan, const SweepModule& module) {
    const SweepReport report = MakeMembers(request, plan, module);
    // Each was told at once, with its reason.
    if (report.failed.size() > 1)
        PrintError(fmt::format("{} of {} {} are not made, as said above",
                               report.members - report.made - report.kept, report.members, Noun(report)));
    if (report.job.empty()) return Tell(request, report);
    if (request.json)
        Print(JSONLine({{"job", report.job}}));
    else if (!request.quiet)
        PrintLine(fmt::format(
            "job {}: it goes on; run this again to wait for it and to gather the manifest, or end it "
            "by scancel {}",
            report.job, report.job));
    return report.cancelled ? EndingSignal::ExitStatus() : kExitDone;
}

} // namespace

int RunSweep(const SweepRequest& request) {
    const SweepModule& module = LoadSweepModule();
    if (!request.check.empty()) return CheckFamily(request, module);
    const Plan plan = PlanOf(request, module);
    if (!request.savePlan.empty()) {
        const std::string lost = module.Save(plan, request.savePlan);
        if (!request.quiet) PrintLine(SavedText(request.savePlan, lost));
        return kExitDone;
    }
    if (!request.list) return MakeFamily(request, plan, module);
    module.List(plan, std::make_shared<Bundle>(Bundle::Find(request.bundle)), request.json, Print);
    return kExitDone;
}

} // namespace corvane::commandline
