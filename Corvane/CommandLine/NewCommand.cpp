#include <algorithm>
#include <memory>
#include <stdexcept>

#include <unistd.h>

#include <fmt/format.h>

#include "Commands.h"
#include "DialogRun.h"
#include "Engine/Failure.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::commandline {

namespace {

namespace fs = std::filesystem;

/// Says at once what would otherwise come up only after the person has set everything.
void CheckOutput(const fs::path& output, Replacing replacing) {
    const auto fail = [&](const std::string& why) {
        throw Failure(fmt::format("{}: {}.", output.string(), why));
    };
    std::error_code error;
    if (fs::is_directory(output, error)) fail("this is a folder; name a file in it");
    try {
        FollowLinks(output);
    } catch (const FileError& why) {
        fail(fmt::format("{}; {}", why.what(), why.GetRemedy()));
    }
    if (fs::exists(output, error)) {
        if (replacing == Replacing::kAsk && !CanAsk())
            fail("the file exists; use --force to replace it, or edit it");
        RequireReplaceable(output, replacing);
    }
    const fs::path folder = fs::absolute(output).parent_path();
    if (!fs::is_directory(folder, error)) fail("the folder does not exist; make it first");
    if (::access(folder.c_str(), W_OK) != 0) fail("you are not allowed to write into this folder");
    try {
        Mosk::FromUTF8(output.string());
    } catch (const std::invalid_argument&) {
        fail("the name is not valid UTF-8; choose another one");
    }
}

/// Whether the person saved to the file from within the dialog, and so has decided about what was there.
bool WasSavedTo(const fs::path& output, const FileJournal& journal) {
    return std::ranges::any_of(journal.Entries(), [&](const FileJournal::Entry& entry) {
        std::error_code error;
        return entry.changed && fs::equivalent(entry.target, output, error);
    });
}

} // namespace

int RunNew(const NewRequest& request) {
    std::error_code error;
    const bool exists = fs::exists(request.output, error);
    CheckOutput(request.output, request.replacing);
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    FileJournal journal;
    const PreferencesRequest preferences{.file = {}, .settings = {}, .sequence = request.sequence};
    const auto answer = RunPreferencesDialog(*bundle, preferences, request.dialog, request.output, journal);
    // What is there is to be replaced by now.
    const bool replace =
        exists || request.replacing == Replacing::kYes || WasSavedTo(request.output, journal);
    return FinishDialog(bundle, answer, request.dialog, request.output, journal, replace);
}

} // namespace corvane::commandline
