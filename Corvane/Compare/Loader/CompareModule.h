#pragma once

#include <filesystem>

#include "Compare/Comparison.h"

namespace corvane {

/// The name of the module's function that compares, which is of type `CompareClipFunction`.
inline constexpr const char* kCompareClipName = "CorvaneCompareClip";
/// Does and throws what `LoadAndCompareClip` does, and tells by `report` what that returns.
using CompareClipFunction = void(const Clip& clip, const std::filesystem::path& video,
                                 const CompareOptions& options, const CompareProgress& progress,
                                 const std::atomic<bool>& cancel, CompareReport& report);

/// The name of the module's function that makes pages, which is of type `ReportPageFunction`.
inline constexpr const char* kReportPageName = "CorvaneReportPage";
/// Does and throws what `ReportPage` does, and tells by `page` what that returns.
using ReportPageFunction = void(const Clip& clip, const CompareReport& report, std::string& page);

} // namespace corvane
