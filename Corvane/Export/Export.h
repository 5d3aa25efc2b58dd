#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "Engine/Clip.h"

namespace corvane {

/// A wrong request rather than one that failed: an unknown name, a range outside the clip. Ends as exit
/// status 2.
class UsageFailure : public Failure {
  public:
    using Failure::Failure;
};

/// What to export, and where to.
struct ExportOptions {
    /// The file to make; "-" is standard output. A PNG name with a printf-style number (`name.%05d.png`)
    /// makes one file a frame.
    std::filesystem::path output;
    /// The kind of output as a suffix without its dot (`png`, `y4m`, `raw`, `mp4`, `mov`, `mkv`, `framemd5`,
    /// ...). Empty: from the suffix of `output`.
    std::string format;
    /// The codec's name. Empty: the kind's own default.
    std::string codec;
    /// First and last frame, both included, from 0. Empty: the whole clip.
    std::optional<std::pair<std::int64_t, std::int64_t>> frames;
    /// Threads that render and convert. 0: as many as the machine has.
    unsigned jobs = 0;
    /// The bytes exactly as the plug-in delivered them, row padding removed. For `raw` only.
    bool native = false;
};

/// Told after each finished frame, on one thread at a time.
using ExportProgress = std::function<void(std::int64_t done, std::int64_t total)>;

/// What an export made.
struct ExportReport {
    std::int64_t frames = 0;
    std::uint64_t bytes = 0; ///< bytes written, all files together
    /// Whether the export was cancelled; nothing is left behind then.
    bool cancelled = false;
};

/// Renders frames of `clip` into a file, files or a stream. Worker threads render; frames arrive in order. A
/// file is made under a temporary name beside its place and renamed when complete; a pipe or device is
/// written as it is. Setting `cancel` (from any thread or a signal handler) ends the export at the next
/// frame.
///
/// Throws `UsageFailure` and `Failure`; no partial file remains.
ExportReport ExportClip(const Clip& clip, const ExportOptions& options, const ExportProgress& progress,
                        const std::atomic<bool>& cancel);

} // namespace corvane
