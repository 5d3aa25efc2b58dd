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

} // namespace corvane
