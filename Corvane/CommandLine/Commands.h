#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Compare/Comparison.h"
#include "Engine/FramePlace.h"
#include "Engine/Preferences.h"
#include "Export/Export.h"
#include "Replacing.h"
#include "Sweep/Plan.h"
#include "Sweep/Slurm.h"
#include "Sweep/Sweep.h"
#include "Validate/Checks.h"

namespace corvane::commandline {

/// Exit statuses of the program. A render or a comparison that a signal ends has 128 plus the signal's
/// number.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCancelled = 3; ///< of `new` and `edit`
inline constexpr int kExitFindings = 4;  ///< of `compare` and `info --strict`

// What each subcommand was asked for, and the function that does it on the main thread. Functions return the
// exit status, and throw `UsageFailure` and `Failure`, which `Main.cpp` tells the person. `bundle` is empty
// if none was named.

/// `synthex info`: say what clips are.
struct InfoRequest {
    std::filesystem::path bundle;
    std::vector<std::filesystem::path> clips; ///< "-" is standard input
    bool json = false;
    bool strict = false; ///< say what is out of the ordinary in the settings, too
};
/// Tries every clip; a clip that can't be read is told at once and makes the status `kExitFailed`. If there
/// is none of these, findings make it `kExitFindings`.
int RunInfo(const InfoRequest& request);

/// `synthex render`: export a clip.
struct RenderRequest {
    std::filesystem::path bundle;
    std::filesystem::path clip;
    /// Without a folder the one output, else more clips.
    std::vector<std::filesystem::path> others;
    std::filesystem::path
        folder; ///< where each clip gets an output of its own name; empty: there is one clip
    std::optional<FrameSpan> frames;
    ExportOptions options; ///< without output and frames
    Replacing replacing = Replacing::kAsk;
    bool quiet = false; ///< no progress, and no word about what was written
};
/// Tries all clips of several, and returns the first failure's status. A signal that ends programs cancels
/// the export; the status is then 128 plus the signal's number.
int RunRender(const RenderRequest& request);

/// `synthex compare`: say what a pipeline did to a clip.
struct CompareRequest {
    std::filesystem::path bundle;
    std::filesystem::path clip;  ///< or the manifest of a family
    std::filesystem::path video; ///< or the folder of the family's videos
    CompareOptions options;      ///< without frames
    std::optional<FrameSpan> frames;
    std::filesystem::path report; ///< an HTML file to write, of a family a folder; none if empty
    bool json = false;            ///< one JSON object instead of sentences
    bool quiet = false;           ///< no progress, and nothing but findings
};
/// Returns `kExitFindings` if there are any. A signal that ends programs ends the comparison; what was found
/// so far is printed then, and the status is 128 plus the signal's number.
int RunCompare(const CompareRequest& request);

/// `synthex sweep`: make a family of clips, or look after one.
struct SweepRequest {
    std::filesystem::path bundle;
    Plan plan;                      ///< without a base if `planFile` holds it
    std::filesystem::path planFile; ///< empty: as given by `plan`
    std::filesystem::path savePlan; ///< where to save the plan instead of making the family; empty: nowhere
    std::filesystem::path check;    ///< a manifest to check instead of making a family; empty: none
    bool list = false;              ///< say what the members are and make nothing
    SweepOptions options;
    bool slurm = false; ///< make the members by a job array, as below
    SlurmOptions slurmOptions;
    bool json = false;
    bool quiet = false; ///< no progress, and no word about what was made
};
/// Returns `kExitFailed` if a member can't be made, or if the check finds something. A signal that ends
/// programs ends the run soon; what was made is kept, and the status is 128 plus the signal's number.
int RunSweep(const SweepRequest& request);

/// How the settings dialog is worked: by a script if any of these is given, else by a person in a window.
struct DialogOptions {
    std::vector<std::string> actions; ///< "ID=VALUE" or "ID", in order
    std::vector<std::string> answers; ///< "save=PATH" and the like, in order
    bool cancel = false;              ///< instead of OK
    bool dump = false;                ///< print the dialog's state just before it closes

    /// Whether any of them is given.
    bool Scripted() const { return !actions.empty() || !answers.empty() || cancel || dump; }
};

/// `synthex new`: make a clip in the dialog.
struct NewRequest {
    std::filesystem::path bundle;
    std::filesystem::path output;
    ClipFormat sequence = kDefaultSequence; ///< what the dialog begins with
    Replacing replacing = Replacing::kAsk;  ///< of `output`, which is kept if nobody can be asked
    DialogOptions dialog;
};
/// Returns `kExitCancelled`, and makes no file, if the dialog is cancelled.
int RunNew(const NewRequest& request);

/// `synthex edit`: edit a clip's settings in the dialog.
struct EditRequest {
    std::filesystem::path bundle;
    std::filesystem::path clip;
    DialogOptions dialog;
};
/// Returns `kExitCancelled`, and changes nothing, if the dialog is cancelled.
int RunEdit(const EditRequest& request);

/// `synthex formats`: list the pixel formats.
struct FormatsRequest {
    std::filesystem::path bundle;
    bool json = false;
};
/// Prints one line a format.
int RunFormats(const FormatsRequest& request);

/// `synthex codecs`: list the codecs.
struct CodecsRequest {
    std::filesystem::path bundle;
    bool json = false;
};
/// Prints a few lines a codec.
int RunCodecs(const CodecsRequest& request);

/// `synthex schema`: print a JSON schema.
struct SchemaRequest {
    std::filesystem::path bundle;
    std::string kind = "clip"; ///< of which files: "clip", "project" or "sweep"
};
/// Prints one JSON object.
int RunSchema(const SchemaRequest& request);

/// `synthex validate`: check a plug-in as a host does.
struct ValidateRequest {
    std::filesystem::path bundle;
    std::chrono::milliseconds timeLimit = std::chrono::seconds(20); ///< for all checks together
    std::uint64_t sequences = kUsualSequences;                      ///< of random requests
};
/// Prints one line a check, as each is made. Returns `kExitFailed` if one of them fails.
int RunValidate(const ValidateRequest& request);

/// `synthex desktop`: work with clips in a window.
struct DesktopRequest {
    std::filesystem::path bundle;
    std::vector<std::filesystem::path> files; ///< projects and settings files
    bool once = false;                        ///< end when the first clip's picture is on the screen
};
/// Returns when the window is closed. Throws `Failure` if no window can be shown.
int RunDesktop(const DesktopRequest& request);

/// `synthex make-checks`, which `RunValidate` starts: make checks in this process.
struct ChecksRequest {
    std::filesystem::path bundle;
    int reports = -1;      ///< descriptor for a `CheckReporter`
    std::size_t first = 0; ///< number of the first check to make
    std::uint64_t sequences = kUsualSequences;
};
/// Reports to the process that started it. Ends at once if nobody reads there.
int RunChecks(const ChecksRequest& request);

} // namespace corvane::commandline
