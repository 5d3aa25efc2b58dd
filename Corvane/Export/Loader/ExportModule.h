#pragma once

#include "Export/Export.h"

namespace corvane {

/// The name of the module's one function, which is of type `ExportClipFunction`.
inline constexpr const char* kExportClipName = "CorvaneExportClip";
/// Does and throws what `ExportClip` does, and tells by `report` what that returns.
using ExportClipFunction = void(const Clip& clip, const ExportOptions& options,
                                const ExportProgress& progress, const std::atomic<bool>& cancel,
                                ExportReport& report);

} // namespace corvane
