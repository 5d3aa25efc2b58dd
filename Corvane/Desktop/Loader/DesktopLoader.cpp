#include "DesktopLoader.h"

#include <fmt/format.h>

#include "Display.h"
#include "Engine/Failure.h"
#include "Engine/LoadedModule.h"

namespace corvane {

namespace {

/// A function of the module, which is loaded for it.
template <class Function>
Function LoadFunction(const char* name, const DesktopOptions& options) {
    if (const std::string why = WhyNoDisplay(); !why.empty())
        throw Failure(fmt::format("No window can be shown: {}; {}.", why, options.remedy));
    return reinterpret_cast<Function>(
        FindInModule({"corvane-desktop", "showing windows", options.remedy}, name));
}

} // namespace

std::unique_ptr<UI_Platform> LoadDesktopPlatform(const DesktopOptions& options) {
    return std::unique_ptr<UI_Platform>(
        LoadFunction<CreateDesktopPlatform>(kCreateDesktopPlatformName, options)(options));
}

int LoadAndRunMainWindow(const DesktopOptions& desktop, const MainWindowOptions& options) {
    return LoadFunction<RunMainWindow>(kRunMainWindowName, desktop)(desktop, options);
}

} // namespace corvane
