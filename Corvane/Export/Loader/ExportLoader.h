#pragma once

#include "Export/Export.h"

namespace corvane {

/// `ExportClip` by the module that exports, which is loaded first: a program that links `ExportClip` waits
/// for the libraries of pixels and pictures whenever it starts. Throws `Failure` as `FindInModule` does, too.
ExportReport LoadAndExportClip(const Clip& clip, const ExportOptions& options, const ExportProgress& progress,
                               const std::atomic<bool>& cancel);

} // namespace corvane
