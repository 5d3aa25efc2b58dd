#pragma once

#include <filesystem>
#include <string>

#include "Compare/Comparison.h"

namespace corvane {

/// `CompareClip` with what `OpenVideo` opens, by the module that compares, which is loaded first: a program
/// that links it waits for the libraries of pixels whenever it starts. Throws what these two throw, and
/// `Failure` as `FindInModule` does. Any thread.
CompareReport LoadAndCompareClip(const Clip& clip, const std::filesystem::path& video,
                                 const CompareOptions& options, const CompareProgress& progress,
                                 const std::atomic<bool>& cancel);

/// `ReportPage` by the same module. Throws what that throws, and `Failure` as `FindInModule` does.
std::string LoadAndMakeReportPage(const Clip& clip, const CompareReport& report);

} // namespace corvane
