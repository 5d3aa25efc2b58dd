#include <memory>

#include <unistd.h>

#include <fmt/format.h>

#include "Commands.h"
#include "DialogRun.h"
#include "Engine/Clip.h"

namespace corvane::commandline {

int RunEdit(const EditRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    // The dialog would not say what is wrong with a file that can't be read.
    Clip::OpenFile(bundle, request.clip);
    if (!request.dialog.cancel && ::access(request.clip.c_str(), W_OK) != 0)
        throw Failure(fmt::format("{}: you are not allowed to write this file; edit a copy of it.",
                                  request.clip.string()));
    FileJournal journal;
    const PreferencesRequest preferences{.file = request.clip, .settings = {}};
    const auto answer = RunPreferencesDialog(*bundle, preferences, request.dialog, request.clip, journal);
    return FinishDialog(bundle, answer, request.dialog, request.clip, journal, true);
}

} // namespace corvane::commandline
