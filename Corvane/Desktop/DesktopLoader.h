#pragma once

#include <memory>

#include "DesktopModule.h"

namespace corvane {

/// Loads the module that shows windows, and makes its platform. Nothing else brings Qt into the process:
/// loading it costs more than most commands take. The module is `../lib/corvane/corvane-desktop.so` from the
/// program's folder.
///
/// Throws `Failure` where there is no display to show windows on, with `options.remedy`, or no module.
std::unique_ptr<UI_Platform> LoadDesktopPlatform(const DesktopOptions& options);

} // namespace corvane
