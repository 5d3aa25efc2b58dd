#include "Arguments.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
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
#include "Export/Targets/ExportKinds.h"
#include "HelpTexts.h"
#include "OptionForms.h"
#include "Services/Frames/FrameBuffers.h"
#include "SweepArguments.h"

namespace corvane::commandline {

namespace {

void AddInfoOptions(CLI::App& command, InfoRequest& request) {
    command.add_option("CLIP", request.clips, "Settings files (.synthex); - is standard input")
        ->required()
        ->type_name("");
    command.add_flag("--json", request.json, "One JSON object a line, one a clip");
    command.add_flag("--strict", request.strict,
                     "Say which keys are unknown or missing, and which values no clip has");
}

void AddRenderOptions(CLI::App& command, RenderRequest& request) {
    ExportOptions& options = request.options;
    command.add_option("CLIP", request.clip, "A settings file (.synthex)")->required()->type_name("");
    command
        .add_option("OUT", request.others,
                    "The file to make; its suffix says of which kind: " + ListKinds(true, ", ") +
                        " ...; - is standard output. With --out-dir, more clips")
        ->type_name("");
    command
        .add_option("--out-dir", request.folder,
                    "Make a file of each clip in this folder, of the kind that --format says")
        ->type_name("DIR");
    AddFrames(command,
              "Frames to render, both included, from 0 (default: all); or one; or times: 2.5s, 0:05-0:10",
              request.frames);
    command.add_option("--format", options.format, "What to make, if the name of OUT does not say")
        ->type_name("SUFFIX");
    command
        .add_option("--codec", options.codec,
                    "Codec to use: " + ListCodecs() +
                        " ... (see 'synthex codecs') or any encoder of libav; its options stand behind "
                        "colons (default: the usual one of the format)")
        ->type_name("CODEC");
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
    AddReplacing(command, request.replacing, "-y,--yes",
                 "Replace files that exist without asking; on no terminal nobody is asked");
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
    command
        .add_option("CLIP", request.clip,
                    "A settings file (.synthex); or the manifest of a family, or its folder")
        ->required()
        ->type_name("");
    command
        .add_option("VIDEO", request.video,
                    "Anything that libav decodes, numbered pictures (out.%05d.png), or - for standard input; "
                    "of a family the folder of its videos")
        ->required()
        ->type_name("");
    command.add_flag("--json", request.json, "One JSON object instead of sentences");
    command
        .add_option("--report", request.report, "Write a report with pictures; of a family a folder of them")
        ->type_name("FILE.html");
    AddNumber(command, "--tolerance", "What a color may be off, in steps of 8 bits (default: 2)",
              CLI::Range(0.0, 255.0), [&options](double steps) { options.tolerance = steps; })
        ->type_name("STEPS");
    AddFrames(command, "Frames of the clip that VIDEO should show, as for render (default: all)",
              request.frames);
    command
        .add_option_function<std::vector<std::string>>(
            "--ignore", [&options](const auto& names) { Ignore(names, options.ignored); },
            "Findings to leave out, such as color,fields.chroma")
        ->type_name("KIND,...")
        ->delimiter(',');
    command.add_flag("--quiet", request.quiet, "No progress bar, and nothing but findings");
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
    const auto readRate = [&sequence](const std::string& text) {
        const auto rate = ReadRate(text);
        if (!rate)
            throw CLI::ValidationError(
                "--rate",
                "'" + text + "' is not understood; write N/D or one number, above 0, such as 29.97");
        sequence.rate = {static_cast<std::uint32_t>(rate->first), static_cast<std::uint32_t>(*rate->second)};
    };
    command
        .add_option_function<std::string>("--rate", readRate,
                                          "Frames per second to begin with, such as 25, 30000/1001 or 119.88 "
                                          "(default: 30)")
        ->type_name("N/D");
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
    AddReplacing(command, request.replacing, "-y,--force", "Replace OUT if it exists, without asking");
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

void AddCodecsOptions(CLI::App& command, CodecsRequest& request) {
    command.add_flag("--json", request.json, "One JSON object a line, one a codec");
}

void AddSchemaOptions(CLI::App& command, SchemaRequest& request) {
    command.add_option("KIND", request.kind, "Of which files: clip, project or sweep (default: clip)")
        ->type_name("")
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kSchemaKinds), std::end(kSchemaKinds)))
                    .description(""));
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

    /// Declares everything and hands it out.
    void Describe(const std::function<void(const CLI::App&)>& describe) {
        for (const Subcommand& subcommand : mSubcommands) subcommand.declare(true);
        describe(mApp);
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

void AddSubcommands(Arguments& arguments) {
    const std::string dialogHelp = kDialogHelp;
    arguments.Add("info", "Say what clips are", kInfoExamples, AddInfoOptions, RunInfo);
    arguments.Add("render", "Make pictures or video of a clip", kRenderExamples, AddRenderOptions, RunRender);
    arguments.Add("compare", "Say what became of a clip in a video", kCompareExamples, AddCompareOptions,
                  RunCompare);
    arguments.Add("sweep", "Make a family of clips", kSweepExamples, AddSweepOptions, RunSweep);
    arguments.Add("new", "Make a clip in the dialog", kNewExamples + dialogHelp, AddNewOptions, RunNew);
    arguments.Add("edit", "Edit a clip in the dialog", kEditExamples + dialogHelp, AddEditOptions, RunEdit);
    arguments.Add("desktop", "Work with clips in a window", kDesktopExamples, AddDesktopOptions, RunDesktop);
    arguments.Add("formats", "List the pixel formats", kFormatsExamples, AddFormatsOptions, RunFormats);
    arguments.Add("codecs", "List the codecs", kCodecsExamples, AddCodecsOptions, RunCodecs);
    arguments.Add("schema", "Print the JSON schema of a kind of files", kSchemaExamples, AddSchemaOptions,
                  RunSchema);
    arguments.Add("validate", "Check a plug-in as a host does", kValidateExamples, AddValidateOptions,
                  RunValidate);
    // What `validate` starts; not for people.
    arguments.Add("make-checks", "", "", AddMakeChecksOptions, RunChecks);
}

} // namespace

int RunArguments(int argc, const char* const* argv) {
    // SVT-AV1 would say on standard error what it is, what it does and why it fails, and can be told by this
    // alone.
    ::setenv("SVT_LOG", "-1", 0);
    Arguments arguments;
    AddSubcommands(arguments);
    return arguments.Run(argc, argv);
}

void DescribeArguments(const std::function<void(const CLI::App&)>& describe) {
    Arguments arguments;
    AddSubcommands(arguments);
    arguments.Describe(describe);
}

} // namespace corvane::commandline
