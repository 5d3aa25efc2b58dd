#pragma once

#include <memory>

#include "DesktopModule.h"

namespace corvane {

// Both load the module that shows windows. Nothing else brings Qt into the process: loading it takes longer
// than most commands do. They throw `Failure`, with the remedy of the options, if there is no display to show
// windows on, and as `FindInModule` does. Both are for the process's main thread, which is the UI thread from
// then on.

/// Makes the platform that shows the toolkit's dialogs as windows.
std::unique_ptr<UI_Platform> LoadDesktopPlatform(const DesktopOptions& options);

/// Shows the main window, and returns the exit status when it has been closed. Throws what `RunMainWindow`
/// throws, too.
int LoadAndRunMainWindow(const DesktopOptions& desktop, const MainWindowOptions& options);

} // namespace corvane
