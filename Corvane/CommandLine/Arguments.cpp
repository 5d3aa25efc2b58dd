#include "Arguments.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands.h"
#include "Compare/FindingKinds.h"
#include "Console.h"
#include "Engine/NumberPair.h"
#include "Export/Targets/ExportKinds.h"
#include "HelpTexts.h"
#include "Services/Frames/FrameBuffers.h"

namespace corvane::commandline {

namespace {

/// Adds an option that takes two numbers in one argument. `take` gets them, and may refuse them by false; the
/// sentence that refuses something else tells what is expected.
template <class Take>
void AddPair(CLI::App& command, const char* name, const char* typeName, const char* about,
             const PairForm& form, const std::string& expected, Take take) {
    const auto read = [=](const std::string& text) {
        const std::optional<NumberPair> pair = ReadPair(text, form);
        if (!pair || !take(pair->first, pair->second))
            throw CLI::ValidationError(name, "'" + text + "' is not understood; write " + expected);
    };
    command.add_option_function<std::string>(name, read, about)->type_name(typeName);
}

/// Adds an option that takes a first and a last number, which `take` gets.
template <class Take>
void AddRange(CLI::App& command, const char* name, const char* about, Take take) {
    AddPair(command, name, "FIRST:LAST", about, {':', 0, std::numeric_limits<std::int64_t>::max(), true},
            "FIRST:LAST (both included, from 0) or one number",
            [take](std::int64_t first, std::optional<std::int64_t> last) {
                take(first, last.value_or(first));
                return first <= last.value_or(first);
            });
}

/// Adds an option that takes a number. A range holds whatever is neither below nor above it: what is no
/// number, too, which is refused here.
template <class Take>
CLI::Option* AddNumber(CLI::App& command, const char* name, const char* about, CLI::Range range, Take take) {
    const auto read = [name, take](double number) {
        if (std::isnan(number)) throw CLI::ValidationError(name, "'nan' is no number");
        take(number);
    };
    return command.add_option_function<double>(name, read, about)->check(range);
}

void AddInfoOptions(CLI::App& command, InfoRequest& request) {
    command.add_option("CLIP", request.clips, "Settings files (.synthex)")->required()->type_name("");
    command.add_flag("--json", request.json, "One JSON object a line, one a clip");
}

void AddRenderOptions(CLI::App& command, RenderRequest& request) {
    ExportOptions& options = request.options;
    command.add_option("CLIP", request.clip, "A settings file (.synthex)")->required()->type_name("");
    command
        .add_option("OUT", options.output,
                    "The file to make; its suffix says of which kind: " + ListKinds(true, ", ") +
                        " ...; - is standard output")
        ->required()
        ->type_name("");
    AddRange(command, "--frames", "Frames to render, both included, from 0 (default: all); or one frame",
             [&options](std::int64_t first, std::int64_t last) {
                 options.frames = {first, last};
             });
    command.add_option("--format", options.format, "What to make, if the name of OUT does not say")
        ->type_name("SUFFIX");
    command
        .add_option("--codec", options.codec,
                    "Codec to use: " + ListCodecs() +
                        " or any encoder of libav (default: the usual one of the format)")
        ->type_name("NAME");
    command.add_option("--jobs", options.jobs, "Threads to work with (default: one a processor)")
        ->type_name("N")
        ->check(CLI::Range(1, 512));
    command
        .add_option("--memory", options.memory,
                    "What frames on their way may take, such as 500M or 4G; fewer threads work if need be "
                    "(default: half of what is free)")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 62).description(""));
    command.add_flag("--native", options.native,
                     "The frame bytes exactly as the plug-in delivered them (for .raw)");
    command.add_flag("--quiet", request.quiet, "No progress bar, and no word about what was written");
}

/// Takes over kinds of findings. Throws if there is none of a name.
void Ignore(const std::vector<std::string>& names, std::set<std::string>& ignored) {
    for (const std::string& name : names) {
        if (std::ranges::none_of(kFindingKinds, [&](auto kind) { return NamesKind(name, kind); }))
            throw CLI::ValidationError(
                "--ignore",
                fmt::format("'{}' is no kind of finding; choose some of {}, or of their first words", name,
                            fmt::join(kFindingKinds, ", ")));
        ignored.insert(name);
    }
}

void AddCompareOptions(CLI::App& command, CompareRequest& request) {
    CompareOptions& options = request.options;
    command.add_option("CLIP", request.clip, "A settings file (.synthex)")->required()->type_name("");
    command
        .add_option("VIDEO", request.video,
                    "Anything that libav decodes, numbered pictures (out.%05d.png), or - for standard input")
        ->required()
        ->type_name("");
    command.add_flag("--json", request.json, "One JSON object instead of sentences");
    command.add_option("--report", request.report, "Write a report with pictures")->type_name("FILE.html");
    AddNumber(command, "--tolerance", "What a color may be off, in steps of 8 bits (default: 2)",
              CLI::Range(0.0, 255.0), [&options](double steps) { options.tolerance = steps; })
        ->type_name("STEPS");
    AddRange(command, "--frames",
             "Frames of the clip that VIDEO should show, both included, from 0 (default: all)",
             [&options](std::int64_t first, std::int64_t last) {
                 options.frames = {first, last};
             });
    command
        .add_option_function<std::vector<std::string>>(
            "--ignore", [&options](const auto& names) { Ignore(names, options.ignored); },
            "Findings to leave out, such as color,fields.chroma")
        ->type_name("KIND,...")
        ->delimiter(',');
    command.add_flag("--quiet", request.quiet, "No progress bar, and nothing but findings");
}

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
                "Codecs, as for render; the same as --vary codec=NAME,...")
            ->type_name("NAME,..."),
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

void AddSequenceOptions(CLI::App& command, ClipFormat& sequence) {
    constexpr std::int64_t kAny = std::numeric_limits<std::uint32_t>::max();
    const auto into = [](std::uint32_t& a, std::uint32_t& b) {
        return [&a, &b](std::int64_t first, std::optional<std::int64_t> second) {
            a = static_cast<std::uint32_t>(first);
            b = static_cast<std::uint32_t>(second.value_or(1));
            return true;
        };
    };
    AddPair(command, "--size", "WxH", "Frame size to begin with (default: 1920x1080)",
            {'x', 1, kDefaultMaxFrameSide, false},
            fmt::format("WIDTHxHEIGHT, both from 1 to {}", kDefaultMaxFrameSide),
            into(sequence.size.width, sequence.size.height));
    AddPair(command, "--par", "N:D", "Pixel aspect ratio to begin with (default: 1:1)", {':', 1, kAny, false},
            "N:D, both above 0", into(sequence.aspect.numerator, sequence.aspect.denominator));
    AddPair(command, "--rate", "N/D", "Frames per second to begin with (default: 30)", {'/', 1, kAny, true},
            "N/D or one whole number, above 0", into(sequence.rate.scale, sequence.rate.sampleSize));
}

void AddDialogOptions(CLI::App& command, DialogOptions& options) {
    command.add_option("--do", options.actions, "Give a control a value, or press a button")
        ->type_name("ID[=VALUE]")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--answer", options.answers, "Answer what the dialog asks on the way")
        ->type_name("WHAT=ANSWER")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_flag("--cancel", options.cancel, "Press Cancel in the end instead of OK");
    command.add_flag("--dump", options.dump, "Print the dialog's state just before it closes, as JSON");
}

void AddNewOptions(CLI::App& command, NewRequest& request) {
    command.add_option("OUT", request.output, "The settings file to make (.synthex)")
        ->required()
        ->type_name("");
    AddSequenceOptions(command, request.sequence);
    command.add_flag("--force", request.force, "Replace OUT if it exists");
    AddDialogOptions(command, request.dialog);
}

void AddEditOptions(CLI::App& command, EditRequest& request) {
    command.add_option("CLIP", request.clip, "A settings file (.synthex)")->required()->type_name("");
    AddDialogOptions(command, request.dialog);
}

void AddDesktopOptions(CLI::App& command, DesktopRequest& request) {
    command.add_option("FILE", request.files, "A project (.cvproj), or settings files (.synthex)")
        ->type_name("");
    command.add_flag("--once", request.once)->group(""); // for measurements
}

void AddFormatsOptions(CLI::App& command, FormatsRequest& request) {
    command.add_flag("--json", request.json, "One JSON object a line, one a format");
}

void AddValidateOptions(CLI::App& command, ValidateRequest& request) {
    command.add_option("BUNDLE", request.bundle, "The plug-in to check")->type_name("");
    AddNumber(command, "--time-limit", "For all checks together (default: 20)", CLI::Range(0.001, 86400.0),
              [&request](double seconds) {
                  request.timeLimit = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
              })
        ->type_name("SECONDS");
    command
        .add_option(
            "--sequences", request.sequences,
            fmt::format("How many random sequences of requests to send (default: {})", kUsualSequences))
        ->type_name("COUNT")
        ->check(CLI::Range(std::uint64_t{0}, std::uint64_t{1'000'000'000}));
}

void AddMakeChecksOptions(CLI::App& command, ChecksRequest& request) {
    command.add_option("FIRST", request.first)->required();
    command.add_option("REPORTS", request.reports)->required();
    command.add_option("SEQUENCES", request.sequences)->required();
    command.add_option("BUNDLE", request.bundle)->required();
}

/// The arguments, of which those behind `--slurm ... --` are options of `--sbatch`.
std::vector<std::string> WithBatchOptions(std::span<const char* const> arguments) {
    std::vector<std::string> words(arguments.begin(), arguments.end());
    const auto slurm = std::ranges::find(words, "--slurm");
    const auto mark = std::find(slurm, words.end(), "--");
    if (mark == words.end()) return words;
    for (std::string& option : std::span(mark + 1, words.end())) option.insert(0, "--sbatch=");
    words.erase(mark);
    return words;
}

/// The program's arguments: declared, then read.
class Arguments {
  public:
    Arguments() : mApp(kAbout, "synthex") {
        mApp.set_version_flag("--version", "synthex " SYNTHEX_VERSION);
        mApp.footer(std::string("\n") + kExamples);
        mApp.add_option("--bundle", mBundle, "The plug-in to use; also understood by every subcommand")
            ->type_name("BUNDLE");
        mApp.require_subcommand(1);
    }

    /// Adds a subcommand; one that is not for people has an empty `about`.
    template <class Request>
    void Add(const char* name, const char* about, const std::string& help,
             void (*declareOptions)(CLI::App&, Request&), int (*run)(const Request&)) {
        mSubcommands.push_back({name, [=, this](bool named) {
                                    CLI::App* const command = mApp.add_subcommand(name, about);
                                    if (*about == '\0') command->group("");
                                    if (named) Declare(*command, help, declareOptions, run);
                                }});
    }

    /// Reads the arguments and does what they ask for. Returns the exit status.
    int Run(int argc, const char* const* argv) {
        // A subcommand that comes first is the only one declared, and otherwise those that no argument names
        // have no options: declaring all takes a tenth of the time of a short run.
        const std::span arguments(argv, static_cast<std::size_t>(argc));
        const auto first = std::ranges::find(mSubcommands, argc > 1 ? argv[1] : "", &Subcommand::name);
        if (first != mSubcommands.end())
            first->declare(true);
        else
            for (const Subcommand& subcommand : mSubcommands)
                subcommand.declare(std::ranges::find(arguments, subcommand.name) != arguments.end());
        const std::vector<std::string> words = WithBatchOptions(arguments);
        std::vector<const char*> pointers;
        for (const std::string& word : words) pointers.push_back(word.c_str());
        try {
            mApp.parse(static_cast<int>(pointers.size()), pointers.data());
        } catch (const CLI::ParseError& error) {
            return Answer(error);
        }
        for (const auto& [command, run] : mRuns)
            if (command->parsed()) return run();
        return kExitUsage;
    }

  private:
    struct Subcommand {
        std::string_view name;
        std::function<void(bool named)> declare; ///< `named`: with its options
    };

    template <class Request>
    void Declare(CLI::App& command, const std::string& help, void (*declareOptions)(CLI::App&, Request&),
                 int (*run)(const Request&)) {
        command.footer("\n" + help);
        const auto request = std::make_shared<Request>();
        if (!command.get_group().empty())
            command.add_option("--bundle", request->bundle, "The plug-in to use")->type_name("BUNDLE");
        declareOptions(command, *request);
        mRuns.emplace_back(&command, [this, request, run] {
            if (request->bundle.empty()) request->bundle = mBundle;
            return run(*request);
        });
    }

    /// Tells the person what is wrong with the arguments, or what they asked to read.
    int Answer(const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return mApp.exit(error);
        std::string command = "synthex";
        for (const CLI::App* const chosen : mApp.get_subcommands()) command += " " + chosen->get_name();
        std::string what = error.what();
        while (what.ends_with('.') || what.ends_with('\n')) what.pop_back();
        if (const auto rest = mApp.remaining(); command == "synthex" && !rest.empty())
            what = "there is no subcommand or option '" + rest.front() + "'";
        PrintError(what + "; see '" + command + " --help'");
        return kExitUsage;
    }

    CLI::App mApp;
    std::filesystem::path mBundle;
    std::vector<Subcommand> mSubcommands;
    std::vector<std::pair<const CLI::App*, std::function<int()>>> mRuns;
};

} // namespace

int RunArguments(int argc, const char* const* argv) {
    // SVT-AV1 would say on standard error what it is, what it does and why it fails, and can be told by this
    // alone.
    ::setenv("SVT_LOG", "-1", 0);
    const std::string dialogHelp = kDialogHelp;
    Arguments arguments;
    arguments.Add("info", "Say what clips are", kInfoExamples, AddInfoOptions, RunInfo);
    arguments.Add("render", "Make pictures or video of a clip", kRenderExamples, AddRenderOptions, RunRender);
    arguments.Add("compare", "Say what became of a clip in a video", kCompareExamples, AddCompareOptions,
                  RunCompare);
    arguments.Add("sweep", "Make a family of clips", kSweepExamples, AddSweepOptions, RunSweep);
    arguments.Add("new", "Make a clip in the dialog", kNewExamples + dialogHelp, AddNewOptions, RunNew);
    arguments.Add("edit", "Edit a clip in the dialog", kEditExamples + dialogHelp, AddEditOptions, RunEdit);
    arguments.Add("desktop", "Work with clips in a window", kDesktopExamples, AddDesktopOptions, RunDesktop);
    arguments.Add("formats", "List the pixel formats", kFormatsExamples, AddFormatsOptions, RunFormats);
    arguments.Add("validate", "Check a plug-in as a host does", kValidateExamples, AddValidateOptions,
                  RunValidate);
    // What `validate` starts; not for people.
    arguments.Add("make-checks", "", "", AddMakeChecksOptions, RunChecks);
    return arguments.Run(argc, argv);
}

} // namespace corvane::commandline
