#include "CompareLoader.h"

#include "CompareModule.h"
#include "Engine/LoadedModule.h"

namespace corvane {
namespace {

void* Find(const char* function) {
    return FindInModule({"corvane-compare", "comparing", "install it and its libraries"}, function);
}

} // namespace

CompareReport LoadAndCompareClip(const Clip& clip, const std::filesystem::path& video,
                                 const CompareOptions& options, const CompareProgress& progress,
                                 const std::atomic<bool>& cancel) {
    void* const function = Find(kCompareClipName);
    CompareReport report;
    reinterpret_cast<CompareClipFunction*>(function)(clip, video, options, progress, cancel, report);
    return report;
}

std::string LoadAndMakeReportPage(const Clip& clip, const CompareReport& report) {
    std::string page;
    reinterpret_cast<ReportPageFunction*>(Find(kReportPageName))(clip, report, page);
    return page;
}

} // namespace corvane
