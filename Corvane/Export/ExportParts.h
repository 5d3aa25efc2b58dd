#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>

#include "Export.h"

namespace corvane {

/// How an export is made in parts, each an export by itself.
struct ExportParts {
    /// First and last frame of each part, both included, in order.
    std::vector<std::pair<std::int64_t, std::int64_t>> frames;
    /// Whether each part is exported to the output itself, a numbered series of files. Else the parts go to
    /// files of the same kind, and are joined.
    bool inPlace = false;
};

/// Divides an export into at most `count` parts of about the same length, which begin at frames where nothing
/// has to be encoded again. Throws `UsageFailure` as `ExportClip` does, and if an export of that kind can't
/// be joined. Takes some milliseconds. Any thread.
ExportParts DivideExport(const Clip& clip, const ExportOptions& options, std::int64_t count);

/// A part that was exported to a file.
struct ExportedPart {
    std::filesystem::path file;
    std::int64_t frames = 0;
};

/// Makes the output of `options` of its parts, in their order, without encoding again: the same bytes as of
/// an export in one piece. The files of the parts stay. Progress is told after each part. Otherwise as
/// `ExportClip`. Throws `Failure`, which names the part, if one is missing, cut or of another kind.
ExportReport JoinExport(const Clip& clip, const ExportOptions& options,
                        const std::vector<ExportedPart>& parts, const ExportProgress& progress,
                        const std::atomic<bool>& cancel);

} // namespace corvane
