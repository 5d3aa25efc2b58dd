#include "SplitClip.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Entry.h"
#include "Export/ExportParts.h"
#include "MemberExport.h"
#include "OpenFamily.h"
#include "OutputName.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

const Family& OneMember(const Family& family) {
    if (family.Count() != 1)
        throw UsageFailure(fmt::format(
            "one clip can be split, and these are {}; leave out --split, or give each axis one value",
            family.Count()));
    return family;
}

// Parts that were made, and what they tell of the whole.
struct MadeParts {
    std::vector<ExportedPart> parts;
    std::vector<fs::path> files; // of all of them
    ExportReport report;
};

MadeParts ReadParts(const fs::path& folder) {
    MadeParts made;
    ReadManifest(folder / kManifestName, [&](std::string&& line, std::int64_t) {
        const auto part = ReadEntry(line);
        if (!part) return; // the join notices what is missing
        made.parts.push_back({folder / part->output, std::ssize(part->frames)});
        for (const fs::path& file : part->files) made.files.push_back(folder / file);
        made.report.pixels = part->pixels;
        made.report.frameHashes.insert(made.report.frameHashes.end(), part->frames.begin(),
                                       part->frames.end());
    });
    return made;
}

} // namespace

SplitClip::SplitClip(const Plan& plan, const std::shared_ptr<Bundle>& bundle)
    : mBundle(bundle), mWhole(OpenFamily(plan, bundle)), mMember(OneMember(mWhole).At(0)),
      mClip(Clip::OpenPrefs(bundle, mMember.settingsFile.string(), WriteSettings(mMember.spec.settings))),
      mPlan(plan) {
    const ExportParts parts = DivideExport(*mClip, ExportOf(mWhole, mMember), plan.split);
    mInPlace = parts.inPlace;
    mFolder = mWhole.Folder() / kEntriesName /
              (SafeName(mMember.output.string()) + (mInPlace ? ".pictures" : ".parts"));
    Plan::Axis axis{"part", {}};
    for (const auto& [first, last] : parts.frames) axis.values.push_back(fmt::format("{}:{}", first, last));
    std::erase_if(mPlan.axes, [](const Plan::Axis& other) { return other.name == "part"; });
    mPlan.axes.push_back(std::move(axis));
    mPlan.zip = false;
    mPlan.split = 0;
    mPlan.output = mFolder / "{part}" / mMember.output.filename();
    mParts = std::make_unique<Family>(mPlan, ReadSettings(Clip::OpenFile(bundle, plan.base)->Settings()));
}

SweepReport SplitClip::Run(const SweepOptions& options, const SweepListener& listener,
                           const std::atomic<bool>& cancel) const {
    return Make(
        !options.only, [&] { return RunSweep(*mParts, mBundle, options, listener, cancel); }, listener,
        cancel);
}

SweepReport SplitClip::RunSlurm(const SlurmOptions& options, const SweepListener& listener,
                                const std::atomic<bool>& cancel) const {
    return Make(
        true, [&] { return RunSlurmSweep(*mParts, mPlan, mBundle, options, listener, cancel); }, listener,
        cancel);
}

// Tasks of a job lock the parts' folder alone.
SweepReport SplitClip::Make(bool whole, const std::function<SweepReport()>& makeParts,
                            const SweepListener& listener, const std::atomic<bool>& cancel) const {
    Manifest manifest(mWhole, whole);
    const bool isMade = manifest.IsMade(mMember);
    SweepReport report;
    if (isMade) {
        report.members = report.kept = mParts->Count();
    } else {
        PrepareFolders(manifest);
        report = makeParts();
    }
    report.areParts = true;
    report.manifest = mWhole.Folder() / kManifestName;
    if (!whole || !report.job.empty() || report.made + report.kept < report.members) return report;
    report.cancelled = !isMade && !Join(manifest, listener, cancel);
    if (report.cancelled) return report;
    manifest.Gather();
    std::error_code error; // what is left there does no harm
    fs::remove_all(mFolder, error);
    manifest.RemoveEntries();
    return report;
}

void SplitClip::PrepareFolders(Manifest& manifest) const {
    manifest.Prepare(mMember);
    if (!mInPlace) return;
    // Each part has a path of its own, which leads to the pictures' own folder.
    std::error_code error;
    fs::create_directories(mFolder, error);
    for (std::int64_t number = 0; number < mParts->Count(); ++number) {
        const fs::path link = mFolder / mParts->At(number).output.parent_path();
        fs::create_directory_symlink(fs::path("../..") / mMember.output.parent_path(), link, error);
        if (error && error != std::errc::file_exists)
            throw Failure(
                fmt::format("{}: a link can't be made here, which parts of a series need ({}); leave out "
                            "--split, or choose another folder",
                            link.string(), error.message()));
    }
}

// False if it was cancelled.
bool SplitClip::Join(Manifest& manifest, const SweepListener& listener,
                     const std::atomic<bool>& cancel) const {
    MadeParts made = ReadParts(mFolder);
    ExportOptions options = ExportOf(mWhole, mMember);
    options.beforeNaming = [&](const Clip& clip, ExportReport report, const std::vector<fs::path>& working) {
        report.frameHashes = made.report.frameHashes;
        manifest.Announce(mMember, clip, report, working);
    };
    if (mInPlace) {
        manifest.Announce(mMember, *mClip, made.report, made.files);
    } else {
        const auto progress = [&](std::int64_t done, std::int64_t total) {
            if (listener.progress) listener.progress({done, total, SweepStatus::Unit::kJoinedFrames});
        };
        if (JoinExport(*mClip, options, made.parts, progress, cancel).cancelled) return false;
    }
    manifest.Keep(mMember);
    return true;
}

} // namespace corvane
