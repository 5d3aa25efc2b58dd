#include "Arguments.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "Console.h"

namespace corvane::commandline {

namespace {

constexpr char kAbout[] =
    "Exact test clips from small settings files: what a clip is, its frames as pictures or video.";

constexpr char kExamples[] =
    R"(Examples:
  synthex info Samples/*.synthex             what these clips are
  synthex render clip.synthex clip.mp4       a video
  synthex render clip.synthex frame.png --frames 0
                                             one picture
  synthex render --help                      more about a subcommand

The plug-in is looked for where --bundle says, else where the environment's
SYNTHEX_BUNDLE says, else beside this program (../lib/ImporterSynthex.bundle).

Exit status: 0 done, 1 the request failed, 2 wrong usage.)";

constexpr char kInfoExamples[] =
    R"(Examples:
  synthex info clip.synthex
  synthex info *.synthex --json | jq -r 'select(.fieldType == 0) | .path'

--json prints one object a line, one a clip, with these keys: path, width,
height, parNumerator, parDenominator, fieldType (0 progressive, 1 upper field
first, 2 lower field first), depth (bits a pixel), scale, sampleSize (the rate
is scale / sampleSize frames a second), duration (frames times sampleSize,
lowest 32 bits), frames, pixelFormat (a name of 'synthex formats', or the code
as "0x........" where it is unknown), deliveredFormat (the format in which
frames arrive; null where none can be made).

All clips are tried. Exit status: 0 all were read, 1 some were not.)";

constexpr char kRenderExamples[] =
    R"(Examples:
  synthex render clip.synthex clip.mp4                        H.264
  synthex render clip.synthex clip.mov --codec prores_ks      ProRes
  synthex render clip.synthex clip.mkv --codec ffv1           lossless
  synthex render clip.synthex frame.png --frames 12           one picture
  synthex render clip.synthex 'frame.%05d.png' --frames 0:99  one file a frame
  synthex render clip.synthex clip.raw --native               the plug-in's own bytes
  synthex render clip.synthex - --format y4m | ffplay -       through a pipe

A file gets its name when it is complete: a render that fails or is cancelled
(Ctrl-C) leaves nothing behind, and an older file of that name as it was.

Exit status: 0 done, 1 failed, 2 wrong usage, 130 ended by Ctrl-C (128 plus the
signal's number: 143 for SIGTERM).)";

constexpr char kFormatsExamples[] =
    R"(Examples:
  synthex formats
  synthex formats --json | jq -r 'select(.deliveredFormat == .name) | .code'

"mPixelFormat" of a settings file is one of these codes, as a decimal number.
Frames of formats that can't be drawn in arrive in the one named last.
--json prints one object a line: code, characters, name, deliveredFormat.)";

constexpr char kValidateExamples[] =
    R"(Examples:
  synthex validate                                  the bundle that is in use
  synthex validate build/lib/ImporterSynthex.bundle
  synthex validate Some.bundle --time-limit 60

The checks are made in a process of its own: a plug-in that hangs or crashes is
a failed check. Each check is one line, 'pass' or 'FAIL'.

Exit status: 0 all checks passed, 1 some failed.)";

/// Takes a number from the front of `text`.
bool TakeNumber(std::string_view& text, std::int64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

/// Reads "FIRST:LAST" or one number.
std::pair<std::int64_t, std::int64_t> ParseFrames(std::string_view text) {
    std::string_view rest = text;
    std::int64_t first = 0;
    bool good = TakeNumber(rest, first);
    std::int64_t last = first;
    if (good && rest.starts_with(':')) {
        rest.remove_prefix(1);
        good = TakeNumber(rest, last);
    }
    if (good && rest.empty() && first <= last) return {first, last};
    throw CLI::ValidationError("--frames",
                               "'" + std::string(text) +
                                   "' is no range; write FIRST:LAST (both included, from 0) or one number");
}

CLI::App* AddCommand(CLI::App& app, const char* name, const char* about, const char* examples,
                     std::filesystem::path& bundle) {
    CLI::App* const command = app.add_subcommand(name, about);
    command->footer(std::string("\n") + examples);
    command->add_option("--bundle", bundle, "The plug-in to use")->type_name("BUNDLE");
    return command;
}

CLI::App* AddInfo(CLI::App& app, InfoRequest& request) {
    auto* const command = AddCommand(app, "info", "Say what clips are", kInfoExamples, request.bundle);
    command->add_option("CLIP", request.clips, "Settings files (.synthex)")->required()->type_name("");
    command->add_flag("--json", request.json, "One JSON object a line, one a clip");
    return command;
}

CLI::App* AddRender(CLI::App& app, RenderRequest& request) {
    auto* const command =
        AddCommand(app, "render", "Make pictures or video of a clip", kRenderExamples, request.bundle);
    ExportOptions& options = request.options;
    command->add_option("CLIP", request.clip, "A settings file (.synthex)")->required()->type_name("");
    command
        ->add_option(
            "OUT", options.output,
            "The file to make: .png, .y4m, .raw, .mp4, .mov, .mkv, .framemd5 ...; - is standard output")
        ->required()
        ->type_name("");
    command
        ->add_option_function<std::string>(
            "--frames", [&options](const std::string& text) { options.frames = ParseFrames(text); },
            "Frames to render, both included, from 0 (default: all); or one frame")
        ->type_name("FIRST:LAST");
    command->add_option("--format", options.format, "What to make, where the name of OUT does not say")
        ->type_name("SUFFIX");
    command->add_option("--codec", options.codec, "Codec to use (default: the usual one of the format)")
        ->type_name("NAME");
    command->add_option("--jobs", options.jobs, "Threads to work with (default: one a processor)")
        ->type_name("N")
        ->check(CLI::Range(1, 512));
    command->add_flag("--native", options.native,
                      "The frame bytes exactly as the plug-in delivered them (for .raw)");
    command->add_flag("--quiet", request.quiet, "No progress bar, and no word about what was written");
    return command;
}

CLI::App* AddFormats(CLI::App& app, FormatsRequest& request) {
    auto* const command =
        AddCommand(app, "formats", "List the pixel formats", kFormatsExamples, request.bundle);
    command->add_flag("--json", request.json, "One JSON object a line, one a format");
    return command;
}

CLI::App* AddValidate(CLI::App& app, ValidateRequest& request) {
    auto* const command =
        AddCommand(app, "validate", "Check a plug-in as a host does", kValidateExamples, request.bundle);
    command->add_option("BUNDLE", request.bundle, "The plug-in to check")->type_name("");
    command
        ->add_option_function<double>(
            "--time-limit",
            [&request](double seconds) {
                request.timeLimit = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
            },
            "For all checks together (default: 20)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0));
    return command;
}

/// What `validate` starts; not for people.
CLI::App* AddMakeChecks(CLI::App& app, ChecksRequest& request) {
    auto* const command = app.add_subcommand("make-checks")->group("");
    command->add_option("FIRST", request.first)->required();
    command->add_option("PIPE", request.pipe)->required();
    command->add_option("BUNDLE", request.bundle)->required();
    return command;
}

/// Tells the person what is wrong with the arguments, or what they asked to read.
int Answer(CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::string command = "synthex";
    for (const CLI::App* const chosen : app.get_subcommands()) command += " " + chosen->get_name();
    std::string_view what = error.what();
    while (what.ends_with('.') || what.ends_with('\n')) what.remove_suffix(1);
    PrintError(std::string(what) + "; see '" + command + " --help'.");
    return kExitUsage;
}

} // namespace

int RunArguments(int argc, const char* const* argv) {
    CLI::App app(kAbout, "synthex");
    app.set_version_flag("--version", "synthex " SYNTHEX_VERSION);
    app.footer(std::string("\n") + kExamples);
    std::filesystem::path bundle;
    app.add_option("--bundle", bundle, "The plug-in to use; also understood by every subcommand")
        ->type_name("BUNDLE");
    app.require_subcommand(1);

    InfoRequest info;
    RenderRequest render;
    FormatsRequest formats;
    ValidateRequest validate{.timeLimit = std::chrono::seconds(20)};
    ChecksRequest checks;
    const CLI::App* const infoCommand = AddInfo(app, info);
    const CLI::App* const renderCommand = AddRender(app, render);
    const CLI::App* const formatsCommand = AddFormats(app, formats);
    const CLI::App* const validateCommand = AddValidate(app, validate);
    const CLI::App* const checksCommand = AddMakeChecks(app, checks);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return Answer(app, error);
    }
    for (std::filesystem::path* const named :
         {&info.bundle, &render.bundle, &formats.bundle, &validate.bundle})
        if (named->empty()) *named = bundle;

    if (infoCommand->parsed()) return RunInfo(info);
    if (renderCommand->parsed()) return RunRender(render);
    if (formatsCommand->parsed()) return RunFormats(formats);
    if (validateCommand->parsed()) return RunValidate(validate);
    if (checksCommand->parsed()) return RunChecks(checks);
    return kExitUsage;
}

} // namespace corvane::commandline
