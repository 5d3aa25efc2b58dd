#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Services/UI/UIPlatform.h"

namespace corvane {

/// What a program asks of the module that shows windows.
struct DesktopOptions {
    /// Where save-file dialogs begin; empty for the current folder.
    std::filesystem::path folder;
    /// What a person can do if no window can be shown: the end of the sentence that says so, without its
    /// period.
    std::string remedy;
};

/// What the main window begins with.
struct MainWindowOptions {
    std::filesystem::path bundle;             ///< as named by the person; empty for the usual one
    std::vector<std::filesystem::path> files; ///< projects and settings files to open
    std::string version;                      ///< of the program, for people
    /// End as soon as the window and the first clip's picture are on the screen. For measurements.
    bool once = false;
};

// The module's functions, and the names to look them up by. They are for the UI thread, and for processes
// that have a display: the caller makes sure of that.

/// Makes the platform that shows windows. The caller owns the platform and deletes it before the program
/// ends.
using CreateDesktopPlatform = UI_Platform* (*)(const DesktopOptions& options);
inline constexpr char kCreateDesktopPlatformName[] = "CorvaneCreateDesktopPlatform";

/// Shows the main window, and returns the exit status when the person has closed it. Throws `Failure` if the
/// plug-in does not load.
using RunMainWindow = int (*)(const DesktopOptions& desktop, const MainWindowOptions& options);
inline constexpr char kRunMainWindowName[] = "CorvaneRunMainWindow";

} // namespace corvane
