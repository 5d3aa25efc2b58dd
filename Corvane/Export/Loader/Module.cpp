#include "ExportModule.h"

/// The module's one function; see `ExportModule.h`.
extern "C" __attribute__((visibility("default"))) void
CorvaneExportClip(const corvane::Clip& clip, const corvane::ExportOptions& options,
                  const corvane::ExportProgress& progress, const std::atomic<bool>& cancel,
                  corvane::ExportReport& report) {
    report = corvane::ExportClip(clip, options, progress, cancel);
}
