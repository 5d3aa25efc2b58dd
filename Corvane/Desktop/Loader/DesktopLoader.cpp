#include "DesktopLoader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "Display.h"
#include "Engine/Failure.h"
#include "Services/Foundation/ProgramFolder.h"

namespace corvane {

namespace {

/// A function of the module, which is loaded for it.
template <class Function>
Function LoadFunction(const char* name, const DesktopOptions& options) {
    if (const std::string why = WhyNoDisplay(); !why.empty())
        throw Failure(fmt::format("No window can be shown: {}; {}.", why, options.remedy));
    const std::filesystem::path module = InLibraryFolder("corvane/corvane-desktop.so");
    // Never unloaded: Qt does not survive that.
    void* const library = ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        throw Failure(fmt::format("{}: the module that shows windows does not load ({}); {}.",
                                  module.string(), ::dlerror(), options.remedy));
    const auto function = reinterpret_cast<Function>(::dlsym(library, name));
    if (function == nullptr)
        throw Failure(fmt::format("{}: this module has no {}; install the one of this version.",
                                  module.string(), name));
    return function;
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
