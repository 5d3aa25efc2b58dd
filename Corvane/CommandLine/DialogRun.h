#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "Commands.h"
#include "Engine/Preferences.h"

namespace corvane::commandline {

/// Lets a person, or the script in `options`, edit a clip's settings. `clip` is the clip's file or the file
/// to be, for messages and as the place where save-file dialogs begin. Prints the dialog's state if that was
/// asked for. Main thread.
///
/// Throws `UsageFailure` if the script can't be carried out, and has put back what it saved by then; throws
/// `Failure` if the request fails or no window can be shown.
PreferencesAnswer RunPreferencesDialog(const Bundle& bundle, const PreferencesRequest& request,
                                       const DialogOptions& options, const std::filesystem::path& clip,
                                       FileJournal& journal);

/// Does what the answer asks for: writes the settings to the clip's file, or opens the saved file that is the
/// source now. Says so, and returns the exit status. `journal` is that of the dialog; `replace` allows that
/// the clip's file exists. Throws `Failure` if the file can't be written or opened, or exists and is not to
/// be replaced, and, after the clip's file was written, if another was to be.
int FinishDialog(const std::shared_ptr<Bundle>& bundle, const PreferencesAnswer& answer,
                 const DialogOptions& options, const std::filesystem::path& clip, const FileJournal& journal,
                 bool replace);

} // namespace corvane::commandline
