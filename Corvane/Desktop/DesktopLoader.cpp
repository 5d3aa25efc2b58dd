#include "DesktopLoader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "Display.h"
#include "Engine/Failure.h"

namespace corvane {

namespace {

std::filesystem::path FindModule() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "lib" / "corvane" / "corvane-desktop.so";
}

} // namespace

std::unique_ptr<UI_Platform> LoadDesktopPlatform(const DesktopOptions& options) {
    if (const std::string why = WhyNoDisplay(); !why.empty())
        throw Failure(fmt::format("No window can be shown: {}; {}.", why, options.remedy));
    const std::filesystem::path module = FindModule();
    // Never unloaded: Qt does not survive that.
    void* const library = ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        throw Failure(fmt::format("{}: the module that shows windows does not load ({}); {}.",
                                  module.string(), ::dlerror(), options.remedy));
    const auto create = reinterpret_cast<CreateDesktopPlatform>(::dlsym(library, kCreateDesktopPlatformName));
    if (create == nullptr)
        throw Failure(fmt::format("{}: this module has no {}; install the one of this version.",
                                  module.string(), kCreateDesktopPlatformName));
    return std::unique_ptr<UI_Platform>(create(options));
}

} // namespace corvane
