#pragma once

#include "Desktop/Loader/DesktopModule.h"

namespace corvane::desktop {

/// Runs the main window until it is closed, or a signal ends the program: then exports are cancelled and
/// leave nothing behind, and what is not saved is kept for the next start. Returns the exit status. Throws
/// `Failure` if the plug-in does not load. UI thread.
int RunDesktop(const DesktopOptions& desktop, const MainWindowOptions& options);

} // namespace corvane::desktop
