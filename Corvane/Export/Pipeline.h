#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "Export.h"
#include "Export/Targets/Target.h"

namespace corvane {

/// A frame on its way: its pixels, and who owns them.
struct RenderedFrame {
    FrameView view;
    Frame owner;
};

/// Makes the frame of this number. Called on many threads; what it throws ends the export.
using RenderFrame = std::function<RenderedFrame(std::int64_t index)>;

/// Sends frames `first` to `last` (both included) through `target`, with `jobs` threads. Each renders and
/// prepares frames; the thread that completes the next frame in order consumes it and those that wait behind
/// it. With one job or one frame no thread is started; if the system can't start as many as that, those that
/// there are do the work. Does not call `Finish`.
///
/// The first exception that any step throws ends the export and is thrown from here, after every thread has
/// ended. Returns the number of frames consumed, which is less than all only if `cancel` was set.
std::int64_t RunPipeline(const RenderFrame& render, Target& target, std::int64_t first, std::int64_t last,
                         unsigned jobs, const ExportProgress& progress, const std::atomic<bool>& cancel);

} // namespace corvane
