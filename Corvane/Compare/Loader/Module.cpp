#include "Compare/ReportPage.h"
#include "CompareModule.h"

/// One of the module's functions; see `CompareModule.h`.
extern "C" __attribute__((visibility("default"))) void
CorvaneCompareClip(const corvane::Clip& clip, const std::filesystem::path& video,
                   const corvane::CompareOptions& options, const corvane::CompareProgress& progress,
                   const std::atomic<bool>& cancel, corvane::CompareReport& report) {
    report = corvane::CompareClip(clip, *corvane::OpenVideo(video, &cancel), options, progress, cancel);
}

/// The other one.
extern "C" __attribute__((visibility("default"))) void
CorvaneReportPage(const corvane::Clip& clip, const corvane::CompareReport& report, std::string& page) {
    page = corvane::ReportPage(clip, report);
}
