#include "Slurm.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <boost/algorithm/string/replace.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <fmt/format.h>

#include "BatchTool.h"
#include "Engine/Failure.h"
#include "Engine/TextFile.h"
#include "Manifest.h"
#include "TaskSizes.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds kFirstLook(200), kLongestLook(2000);

std::string Quoted(const std::string& word) {
    return "'" + boost::algorithm::replace_all_copy(word, "'", "'\\''") + "'";
}

// One family on a cluster.
class SlurmSweep {
  public:
    SlurmSweep(const Family& family, const Plan& plan, const SlurmOptions& options)
        : mFamily(family), mPlan(plan), mOptions(options),
          mFolder(fs::absolute(family.Folder() / kEntriesName)) {}

    SweepReport Make(const std::shared_ptr<Bundle>& bundle, const SweepListener& listener,
                     const std::atomic<bool>& cancel) {
        mReport.manifest = mFamily.Folder() / kManifestName;
        mReport.members = mFamily.Count();
        mReport.job = OlderJob();
        std::vector<std::int64_t> missing;
        if (mReport.job.empty()) {
            Manifest manifest(mFamily, true); // gone, and its lock with it, before tasks begin
            missing = MissingFrom(manifest);
        }
        if (!missing.empty()) Submit(missing, bundle);
        if (!mReport.job.empty()) {
            if (mOptions.detach) return std::move(mReport);
            Wait(listener, cancel);
            if (mReport.cancelled) return std::move(mReport);
        }
        Gather(listener);
        return std::move(mReport);
    }

  private:
    fs::path JobFile() const { return mFolder / "job"; }

    // The job that was submitted before, if it waits or runs.
    std::string OlderJob() const {
        std::error_code error;
        if (!fs::exists(JobFile(), error)) return {};
        const std::string job = boost::algorithm::trim_copy(ReadTextFile(JobFile()));
        return IsAtWork(job) ? job : std::string();
    }

    static bool IsAtWork(const std::string& job) {
        const ToolAnswer answer = RunTool({"squeue", "--noheader", "--jobs=" + job, "--format=%T"});
        if (answer.status == 0) return !boost::algorithm::trim_copy(answer.said).empty();
        // It is forgotten some minutes after its end.
        if (answer.errors.find("Invalid job id") != std::string::npos) return false;
        throw Failure(fmt::format("squeue: {}; run this again when Slurm answers: job {} goes on meanwhile",
                                  answer.Reason(), job));
    }

    std::vector<std::int64_t> MissingFrom(Manifest& manifest) const {
        std::vector<std::int64_t> missing;
        for (std::int64_t number = 0; number < mFamily.Count(); ++number)
            if (!manifest.IsMade(mFamily.At(number))) missing.push_back(number);
        return missing;
    }

    void Submit(const std::vector<std::int64_t>& missing, const std::shared_ptr<Bundle>& bundle) {
        const auto tasks = DivideIntoTasks(mFamily, missing, bundle, mOptions.taskSeconds);
        // It went with the manifest that looked for what is missing, if nothing was in it.
        fs::create_directories(mFolder);
        std::ignore = SavePlan(mPlan, mFolder / "plan");
        std::ignore = WriteTextFile(mFolder / "task", TaskScript(tasks), 0777);
        std::string notes = fmt::format("{}\n", mFamily.Count() - std::ssize(missing));
        for (const auto& [first, last] : tasks) notes += fmt::format("{} {}\n", first, last);
        std::ignore = WriteTextFile(mFolder / "tasks", notes);
        std::vector<std::string> words{
            "sbatch", "--parsable", "--job-name=synthex-sweep", fmt::format("--array=0-{}", tasks.size() - 1),
            "--open-mode=truncate",
            // In the name a percent sign stands for more.
            "--output=" + boost::algorithm::replace_all_copy(mFolder.string(), "%", "%%") + "/task-%a.log"};
        words.insert(words.end(), mOptions.sbatch.begin(), mOptions.sbatch.end());
        words.push_back((mFolder / "task").string());
        const ToolAnswer answer = RunTool(words);
        if (answer.status != 0)
            throw Failure(fmt::format("sbatch: {}; change its options behind --, or leave out --slurm",
                                      answer.Reason()));
        // ID, or ID;CLUSTER.
        mReport.job = boost::algorithm::trim_copy(answer.said.substr(0, answer.said.find(';')));
        std::ignore = WriteTextFile(JobFile(), mReport.job + "\n");
    }

    std::string TaskScript(const std::vector<TaskRange>& tasks) const {
        std::string script =
            "#!/bin/sh\n# An array task of synthex sweep: makes the members of its range.\nset --";
        for (const auto& [first, last] : tasks) script += fmt::format(" {}:{}", first, last);
        const fs::path program = fs::read_symlink("/proc/self/exe");
        const std::string bundle =
            mOptions.bundle.empty() ? "" : " --bundle " + Quoted(fs::absolute(mOptions.bundle).string());
        return script +
               fmt::format(
                   "\nshift \"$SLURM_ARRAY_TASK_ID\"\nexec {} sweep{} --plan {} --only \"$1\" --quiet "
                   "--jobs \"${{SLURM_CPUS_ON_NODE:-1}}\"\n",
                   Quoted(program.string()), bundle, Quoted((mFolder / "plan").string()));
    }

    void Wait(const SweepListener& listener, const std::atomic<bool>& cancel) {
        milliseconds pause = kFirstLook;
        while (IsAtWork(mReport.job)) {
            if (listener.progress)
                listener.progress({CountMade(), mReport.members, SweepStatus::Unit::kMembers});
            for (milliseconds waited{}; waited < pause && !cancel; waited += kFirstLook)
                std::this_thread::sleep_for(kFirstLook);
            if ((mReport.cancelled = cancel)) return;
            pause = std::min(2 * pause, kLongestLook);
        }
        std::error_code error;
        fs::remove(JobFile(), error);
        mReport.job.clear();
    }

    std::int64_t CountMade() const {
        std::error_code error;
        std::int64_t count = 0;
        for (const auto& entry : fs::directory_iterator(mFolder, error))
            count += entry.path().extension() == ".json";
        return count;
    }

    void Gather(const SweepListener& listener) {
        Manifest manifest(mFamily, true);
        const std::vector<std::int64_t> missing = MissingFrom(manifest);
        ReadNotes();
        const std::int64_t made = mReport.members - std::ssize(missing);
        mReport.kept = std::min(mKept.value_or(made), made);
        mReport.made = made - mReport.kept;
        manifest.Gather();
        FindFailed(missing);
        for (const std::string& sentence : mReport.failed)
            if (listener.failed) listener.failed(sentence);
        // What is not made may be asked for by looking at the logs.
        if (missing.empty()) manifest.RemoveEntries();
    }

    // What was noted when the job was submitted.
    void ReadNotes() {
        std::ifstream notes(mFolder / "tasks");
        if (std::int64_t kept = 0; notes >> kept) mKept = kept;
        for (TaskRange task; notes >> task.first >> task.second;) mTasks.push_back(task);
    }

    void FindFailed(const std::vector<std::int64_t>& missing) {
        for (std::size_t i = 0; i < mTasks.size(); ++i) {
            const auto [first, last] = mTasks[i];
            const auto from = std::ranges::lower_bound(missing, first);
            const auto count = std::upper_bound(from, missing.end(), last) - from;
            if (count == 0) continue;
            const fs::path log = mFolder / fmt::format("task-{}.log", i);
            mReport.failed.push_back(
                fmt::format("task {}: {} of the members {}:{} were not made{}; see {}, and run "
                            "this again to make them",
                            i, count, first, last, LastLineOf(log), log.string()));
        }
    }

    // As a clause, or nothing.
    static std::string LastLineOf(const fs::path& log) {
        std::ifstream file(log);
        std::string last;
        for (std::string line; std::getline(file, line);)
            if (!line.empty()) last = line;
        return last.empty() ? last : fmt::format(" ({})", last);
    }

    const Family& mFamily;
    const Plan& mPlan;
    const SlurmOptions& mOptions;
    const fs::path mFolder;
    SweepReport mReport;
    std::optional<std::int64_t> mKept; // members that were made before the job
    std::vector<TaskRange> mTasks;
};

} // namespace

SweepReport RunSlurmSweep(const Family& family, const Plan& plan, const std::shared_ptr<Bundle>& bundle,
                          const SlurmOptions& options, const SweepListener& listener,
                          const std::atomic<bool>& cancel) {
    return SlurmSweep(family, plan, options).Make(bundle, listener, cancel);
}

} // namespace corvane
