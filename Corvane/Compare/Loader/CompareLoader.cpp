#include "CompareLoader.h"

#include "CompareModule.h"
#include "Engine/LoadedModule.h"

namespace corvane {

CompareReport LoadAndCompareClip(const Clip& clip, const std::filesystem::path& video,
                                 const CompareOptions& options, const CompareProgress& progress,
                                 const std::atomic<bool>& cancel) {
    const LoadedModule module{"corvane-compare", "comparing", "install it and its libraries"};
    void* const function = FindInModule(module, kCompareClipName);
    CompareReport report;
    reinterpret_cast<CompareClipFunction*>(function)(clip, video, options, progress, cancel, report);
    return report;
}

} // namespace corvane
