#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Engine/Clip.h"
#include "Export/Targets/ContentHash.h"

namespace corvane {

struct ExportReport;

/// What to export, and where to.
struct ExportOptions {
    /// The file to make; "-" is standard output. A PNG name with a printf-style number (`name.%05d.png`)
    /// makes one file a frame.
    std::filesystem::path output;
    /// The kind of output: a name of `ExportKinds`, or a container of libav by its suffix or name. Upper and
    /// lower case are alike. Empty: from the suffix of `output`.
    std::string format;
    /// The codec, NAME[:option=value[:option=value...]], such as `h264:preset=ultrafast:crf=23` or
    /// `ffv1:pix_fmt=yuv420p`. NAME is one of `ExportCodecs` or any encoder of libav; the options are the
    /// encoder's own, and `pix_fmt` and `threads`. For `y4m` it is the sampling: 420, 422 or 444, with p8,
    /// p10, p12, p14 or p16 behind it for other bits than 16 of float frames and 8 of others. Empty: the
    /// kind's default, with the defaults of `H264Settings`.
    ///
    /// Without `pix_fmt` the pictures keep what the codec can of the clip's alpha and of its bits (H.264:
    /// 8 bits).
    std::string codec;
    /// First and last frame, both included, from 0. Empty: the whole clip, or its first frame for one
    /// picture.
    std::optional<std::pair<std::int64_t, std::int64_t>> frames;
    /// Threads that render and convert. 0: as many as are of use on this machine.
    unsigned jobs = 0;
    /// Bytes that frames on their way may take; as many threads are left out as it takes to keep to that. 0:
    /// half of the memory that is free.
    std::uint64_t memory = 0;
    /// The bytes exactly as the plug-in delivered them, row padding removed. Only for `raw`, which otherwise
    /// is B, G, R, A in bytes for 8-bit formats and R, G, B, A in 16-bit little-endian words for float ones.
    bool native = false;
    /// Whether to hash every picture.
    bool hashFrames = false;
    /// Told when all of the output is written and has not got its name yet, with the report so far, and where
    /// this process finds the files meanwhile. What it throws ends the export.
    std::function<void(const Clip&, const ExportReport&, const std::vector<std::filesystem::path>&)>
        beforeNaming = {};
};

/// Told after each finished frame, by one thread at a time. What it throws ends the export.
using ExportProgress = std::function<void(std::int64_t done, std::int64_t total)>;

/// What an export made.
struct ExportReport {
    std::int64_t frames = 0;
    std::uint64_t bytes = 0; ///< bytes written, all files together
    /// Whether the clip is not opaque and the output has no place for its alpha.
    bool losesAlpha = false;
    /// What could not be kept of older files that were replaced, as a clause, or nothing.
    std::string lost;
    /// The hash of every picture, as decoders of the output give it in the layout of libav's raw video if
    /// they lose nothing. Of lossy codecs it is the picture that was encoded. If it was asked for.
    std::vector<ContentHash> frameHashes;
    /// What libav calls the pixels of these pictures, and the host those of frames as delivered.
    std::string pixels;
    /// Whether the export was cancelled; nothing is left behind then.
    bool cancelled = false;
};

/// Renders frames of `clip` into a file, files or a stream. Worker threads render; frames arrive in order. A
/// file is made under a temporary name beside its place and renamed when it is complete; a pipe or device is
/// written as it is. Setting `cancel` (from any thread or a signal handler) ends the export at the next
/// frame. SIGPIPE and SIGXFSZ are ignored meanwhile. Any thread; several exports may run side by side.
///
/// Y'CbCr is limited range with chroma sited left. It keeps the clip's own matrix; made of R'G'B' it has
/// BT.709 for more than 576 rows, else BT.601. Premultiplied color is divided by its alpha; targets without
/// alpha drop it. Linear light is coded by BT.709's transfer.
///
/// Throws `UsageFailure` for options that can't be and `Failure` for what goes wrong; no partial file
/// remains.
ExportReport ExportClip(const Clip& clip, const ExportOptions& options, const ExportProgress& progress,
                        const std::atomic<bool>& cancel);

/// What can be said of an export without making it.
struct ExportPreview {
    /// Why it would fail, as a sentence without the name of the output; empty if it can be made.
    std::string whyNot;
    /// Whether the clip is not opaque and the output has no place for its alpha.
    bool losesAlpha = false;
    /// Whether it would fail for options that can't be.
    bool wrongUsage = false;
};

/// Sets up everything that `ExportClip` would, encoder and container included, but renders no frame and makes
/// no file. Says nothing about the destination. Takes some milliseconds. Any thread, also beside an export.
/// Fails only for want of memory.
ExportPreview PreviewExport(const Clip& clip, const ExportOptions& options);

} // namespace corvane
