#pragma once

#include <memory>

#include "DesktopModule.h"

namespace corvane {

// Both load the module that shows windows. Nothing else brings Qt into the process: loading it costs more
// than most commands take. The module is `../lib/corvane/corvane-desktop.so` from the program's folder. They
// throw `Failure` where there is no display to show windows on, with `options.remedy`, or no module.

/// Makes the platform that shows the toolkit's dialogs as windows.
std::unique_ptr<UI_Platform> LoadDesktopPlatform(const DesktopOptions& options);

/// Shows the main window, and returns the exit status when it has been closed.
int LoadAndRunMainWindow(const DesktopOptions& desktop, const MainWindowOptions& options);

} // namespace corvane
