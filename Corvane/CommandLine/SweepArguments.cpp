#include "SweepArguments.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "OptionForms.h"

namespace corvane::commandline {

namespace {

/// Adds an axis of a family, with values that commas separate.
void AddAxis(Plan& plan, const std::string& name, std::string_view values) {
    Plan::Axis axis{name, {}};
    while (!values.empty()) {
        const std::size_t end = std::min(values.find(','), values.size());
        axis.values.emplace_back(values.substr(0, end));
        values.remove_prefix(std::min(end + 1, values.size()));
    }
    plan.axes.push_back(std::move(axis));
}

/// What a family is made of. Returns the options of that.
std::vector<CLI::Option*> AddPlanOptions(CLI::App& command, Plan& plan) {
    const auto vary = [&plan](const std::vector<std::string>& axes) {
        for (const std::string& axis : axes) {
            const std::size_t at = axis.find('=');
            if (at == std::string::npos)
                throw CLI::ValidationError("--vary",
                                           "'" + axis + "' is not understood; write AXIS=VALUE,VALUE...");
            AddAxis(plan, axis.substr(0, at), std::string_view(axis).substr(at + 1));
        }
    };
    return {
        command.add_option("BASE", plan.base, "The clip that members differ from (.synthex)")->type_name(""),
        command
            .add_option("OUT", plan.output,
                        "What outputs are called, with axes in braces, such as 'out/{name}-{rate}.{codec}'")
            ->type_name(""),
        command.add_option_function<std::vector<std::string>>("--vary", vary, "A setting, and its values")
            ->type_name("AXIS=VALUE,...")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll),
        // After `--vary`, so that codecs change fastest.
        command
            .add_option_function<std::string>(
                "--codec", [&plan](const std::string& codecs) { AddAxis(plan, "codec", codecs); },
                "Codecs, as for render; the same as --vary codec=CODEC,...")
            ->type_name("CODEC,..."),
        command.add_flag("--zip", plan.zip, "First values with first values, instead of all combinations")};
}

void AddSlurmOptions(CLI::App& command, SweepRequest& request) {
    CLI::Option* const slurm =
        command.add_flag("--slurm", request.slurm,
                         "Make the members by a job array of Slurm, with sbatch's options behind --");
    command.add_flag("--detach", request.slurmOptions.detach, "Return when the job is submitted")
        ->needs(slurm);
    AddNumber(command, "--task-seconds", "What a task takes at least (default: 60)", CLI::Range(0.0, 1e6),
              [&request](double seconds) { request.slurmOptions.taskSeconds = seconds; })
        ->type_name("SECONDS")
        ->needs(slurm);
    command
        .add_option("--sbatch", request.slurmOptions.sbatch,
                    "An option of sbatch; the same as to write it behind --")
        ->type_name("OPTION")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->needs(slurm);
    for (const char* const other : {"--only", "--jobs", "--list", "--check", "--save-plan"})
        slurm->excludes(command.get_option(other));
}

} // namespace

void AddSweepOptions(CLI::App& command, SweepRequest& request) {
    auto plan = AddPlanOptions(command, request.plan);
    CLI::Option* const file =
        command.add_option("--plan", request.planFile, "A plan, instead of all that")->type_name("FILE.json");
    CLI::Option* const check =
        command.add_option("--check", request.check, "Look whether a family is there and unchanged")
            ->type_name("MANIFEST");
    for (CLI::Option* const option : plan) option->excludes(file)->excludes(check);
    file->excludes(check);
    command.add_option("--save-plan", request.savePlan, "Save the plan, and make nothing")
        ->type_name("FILE.json");
    command.add_flag("--list,--dry-run", request.list, "Say what the members are, and make nothing");
    command
        .add_option("--split", request.plan.split,
                    "Make one clip in N parts side by side, and join them (lossless and intra codecs)")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000))
        ->excludes(check);
    AddRange(command, "--only", "Make these members alone, both included, and leave the manifest as it is",
             [&request](std::int64_t first, std::int64_t last) {
                 request.options.only = {first, last};
             });
    command.add_option("--jobs", request.options.jobs, "Members to make at once (default: two a processor)")
        ->type_name("N")
        ->check(CLI::Range(1, 512));
    AddSlurmOptions(command, request);
    command.add_flag("--json", request.json, "JSON instead of a table and sentences");
    command.add_flag("--quiet", request.quiet, "No progress bar, and no word about what was made");
}

std::vector<std::string> WithBatchOptions(std::span<const char* const> arguments) {
    std::vector<std::string> words(arguments.begin(), arguments.end());
    const auto slurm = std::ranges::find(words, "--slurm");
    const auto mark = std::find(slurm, words.end(), "--");
    if (mark == words.end()) return words;
    for (std::string& option : std::span(mark + 1, words.end())) option.insert(0, "--sbatch=");
    words.erase(mark);
    return words;
}

} // namespace corvane::commandline
