#include "ExportLoader.h"

#include "Engine/LoadedModule.h"
#include "ExportModule.h"

namespace corvane {

ExportReport LoadAndExportClip(const Clip& clip, const ExportOptions& options, const ExportProgress& progress,
                               const std::atomic<bool>& cancel) {
    const LoadedModule module{"corvane-export", "rendering", "install it and its libraries"};
    void* const function = FindInModule(module, kExportClipName);
    ExportReport report;
    reinterpret_cast<ExportClipFunction*>(function)(clip, options, progress, cancel, report);
    return report;
}

} // namespace corvane
