#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Engine/Preferences.h"
#include "Export/Export.h"

namespace corvane::commandline {

/// Exit statuses of the program. A render that a signal ends has 128 plus the signal's number.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCancelled = 3; ///< of `new` and `edit`

// What each subcommand was asked for, and the function that does it. Functions return the exit status; what
// they throw is told to the person by `Main.cpp`. `bundle` is empty where none was named.

struct InfoRequest {
    std::filesystem::path bundle;
    std::vector<std::filesystem::path> clips;
    bool json = false;
};
int RunInfo(const InfoRequest& request);

struct RenderRequest {
    std::filesystem::path bundle;
    std::filesystem::path clip;
    ExportOptions options;
    bool quiet = false;
};
int RunRender(const RenderRequest& request);

/// How the preferences dialog is worked: with any of these by a script, else in a window by a person.
struct DialogOptions {
    std::vector<std::string> actions; ///< "ID=VALUE" or "ID", in order
    std::vector<std::string> answers; ///< "save=PATH" and the like, in order
    bool cancel = false;              ///< instead of OK
    bool dump = false;                ///< print the dialog's state just before it closes

    bool Scripted() const { return !actions.empty() || !answers.empty() || cancel || dump; }
};

struct NewRequest {
    std::filesystem::path bundle;
    std::filesystem::path output;
    ClipFormat sequence = kDefaultSequence;
    bool force = false;
    DialogOptions dialog;
};
int RunNew(const NewRequest& request);

struct EditRequest {
    std::filesystem::path bundle;
    std::filesystem::path clip;
    DialogOptions dialog;
};
int RunEdit(const EditRequest& request);

struct FormatsRequest {
    std::filesystem::path bundle;
    bool json = false;
};
int RunFormats(const FormatsRequest& request);

struct ValidateRequest {
    std::filesystem::path bundle;
    std::chrono::milliseconds timeLimit = std::chrono::seconds(20); ///< for all checks together
};
int RunValidate(const ValidateRequest& request);

struct DesktopRequest {
    std::filesystem::path bundle;
    std::vector<std::filesystem::path> files; ///< projects and settings files
    bool once = false;                        ///< end when the first clip's picture is on the screen
};
int RunDesktop(const DesktopRequest& request);

/// Makes checks in this process and reports on a pipe; what `RunValidate` starts.
struct ChecksRequest {
    std::filesystem::path bundle;
    int pipe = -1;         ///< descriptor to report on
    std::size_t first = 0; ///< number of the first check to make
};
int RunChecks(const ChecksRequest& request);

} // namespace corvane::commandline
