#include "DialogRun.h"

#include <csignal>
#include <system_error>

#include <fmt/format.h>

#include "Console.h"
#include "Desktop/Loader/DesktopLoader.h"
#include "Engine/Clip.h"
#include "Engine/TextFile.h"
#include "Services/Foundation/AtomicFile.h"
#include "Services/UI/ScriptedPlatform.h"

namespace corvane::commandline {

namespace {

namespace fs = std::filesystem;

constexpr char kWithoutWindow[] = "use --do, --answer, --cancel or --dump to work the dialog without one";

DialogScript ReadScript(const DialogOptions& options) {
    DialogScript script{.actions = {}, .answers = {}, .cancel = options.cancel, .dump = options.dump};
    try {
        for (const std::string& text : options.actions) script.actions.push_back(ScriptedAction::Parse(text));
        for (const std::string& text : options.answers) script.answers.push_back(ScriptedAnswer::Parse(text));
    } catch (const ScriptError& error) {
        throw UsageFailure(fmt::format("{}.", error.what()));
    }
    return script;
}

PreferencesAnswer RunScript(const Bundle& bundle, const PreferencesRequest& request,
                            const DialogOptions& options, FileJournal& journal) {
    ScriptedPlatform platform(ReadScript(options));
    const ScopedPlatform scope(platform);
    PreferencesAnswer answer = RequestPreferences(bundle, request, journal);
    if (platform.GetError()) {
        journal.Undo();
        throw UsageFailure(fmt::format("{}.", *platform.GetError()));
    }
    if (!platform.GetDump().empty()) Print(platform.GetDump() + "\n");
    return answer;
}

PreferencesAnswer RunWindow(const Bundle& bundle, const PreferencesRequest& request, const fs::path& clip,
                            const FileJournal& journal) {
    const auto platform =
        LoadDesktopPlatform({.folder = fs::absolute(clip).parent_path(), .remedy = kWithoutWindow});
    const ScopedPlatform scope(*platform);
    return RequestPreferences(bundle, request, journal);
}

/// Tells the person what was done: on standard error if a dump, which is for programs, goes to standard
/// output.
void Say(const DialogOptions& options, const std::string& sentence) {
    if (options.dump)
        PrintError(sentence);
    else
        PrintLine(sentence);
}

} // namespace

PreferencesAnswer RunPreferencesDialog(const Bundle& bundle, const PreferencesRequest& request,
                                       const DialogOptions& options, const fs::path& clip,
                                       FileJournal& journal) {
    // A limit of file sizes is an error of writing: ending at once would leave a half-written file behind.
    ::signal(SIGXFSZ, SIG_IGN);
    PreferencesAnswer answer = options.Scripted() ? RunScript(bundle, request, options, journal)
                                                  : RunWindow(bundle, request, clip, journal);
    if (answer.outcome == PreferencesOutcome::kUnreadable || answer.outcome == PreferencesOutcome::kFailed)
        throw Failure(fmt::format("{}: the settings can't be edited ({}); {}.", clip.string(), answer.message,
                                  journal.WhatChanged()));
    return answer;
}

int FinishDialog(const std::shared_ptr<Bundle>& bundle, const PreferencesAnswer& answer,
                 const DialogOptions& options, const fs::path& clip, const FileJournal& journal,
                 bool replace) {
    if (const std::string lost = journal.WhatWasLost(); !lost.empty()) Say(options, lost);
    if (answer.outcome == PreferencesOutcome::kCancelled) {
        PrintError(fmt::format("{}: the dialog was cancelled; {}.", clip.string(), journal.WhatChanged()));
        return kExitCancelled;
    }
    if (answer.outcome == PreferencesOutcome::kUseFile) {
        const auto source = Clip::OpenFile(bundle, answer.file);
        Say(options, fmt::format("{}: the clip's source is now {}.", clip.string(), source->Name()));
        return kExitDone;
    }
    std::error_code error;
    if (!replace && fs::exists(clip, error))
        throw Failure(
            fmt::format("{}: a file of that name was made meanwhile; it is kept, and the settings are "
                        "not; use --force to replace it.",
                        clip.string()));
    const std::string lost = WriteTextFile(clip, answer.settings);
    if (answer.outcome == PreferencesOutcome::kNotSaved)
        throw Failure(fmt::format("{}; its settings were saved to {}{}{}.", answer.message, clip.string(),
                                  lost.empty() ? "" : "; ", lost));
    Say(options, SavedText(clip, lost));
    return kExitDone;
}

} // namespace corvane::commandline
