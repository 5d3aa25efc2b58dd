#pragma once

#include <filesystem>
#include <string>

#include "Services/UIPlatform.h"

namespace corvane {

/// What a program asks of the module that shows windows.
struct DesktopOptions {
    /// Where save-file dialogs begin; empty for the current folder.
    std::filesystem::path folder;
    /// What a person can do where no window can be shown: the end of the sentence that says so, without its
    /// stop.
    std::string remedy;
};

/// The module's one function, and the name to look it up by: makes the platform that shows windows. The
/// caller owns the platform and deletes it before the program ends. It must have made sure that there is a
/// display.
using CreateDesktopPlatform = UI_Platform* (*)(const DesktopOptions& options);
inline constexpr char kCreateDesktopPlatformName[] = "CorvaneCreateDesktopPlatform";

} // namespace corvane
