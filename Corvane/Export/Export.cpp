#include "Export.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "Export/Files/OutputFile.h"
#include "Export/Targets/HashingTarget.h"
#include "ExportSetup.h"
#include "FreeMemory.h"
#include "Pipeline.h"
#include "Processors.h"

namespace corvane {
namespace {

// A thread has a frame and the picture that it makes of it, and another picture waits for its turn.
constexpr std::uint64_t kFramesOfJob = 3;

unsigned JobsOf(const ExportOptions& options, const StreamFacts& facts, const Target& target) {
    const unsigned jobs = options.jobs != 0 ? options.jobs : target.UsefulJobs(Processors());
    const std::uint64_t memory = options.memory != 0 ? options.memory : FreeMemory() / 2;
    const std::uint64_t frame =
        std::uint64_t{facts.size.width} * facts.size.height * BytesPerPixel(facts.raster);
    const std::uint64_t most = memory / kFramesOfJob / std::max<std::uint64_t>(frame, 1);
    return static_cast<unsigned>(std::clamp<std::uint64_t>(most, 1, jobs));
}

} // namespace

ExportPreview PreviewExport(const Clip& clip, const ExportOptions& options) {
    try {
        const ExportSetup setup(options);
        if (std::string reason = clip.WhyNotRenderable(); !reason.empty()) return {std::move(reason), false};
        const StreamFacts facts = FactsOf(clip, clip.Info().frames);
        const std::unique_ptr<Target> target = setup.MakeTarget(facts, kNowhere);
        return {{}, LosesAlpha(clip, facts, *target)};
    } catch (const Failure& failure) {
        std::string reason = failure.what();
        if (const std::string start = fmt::format("{}: ", kNowhere); reason.starts_with(start))
            reason.erase(0, start.size());
        const bool wrongUsage = dynamic_cast<const UsageFailure*>(&failure) != nullptr;
        return {std::move(reason), false, wrongUsage};
    }
}

ExportReport ExportClip(const Clip& clip, const ExportOptions& options, const ExportProgress& progress,
                        const std::atomic<bool>& cancel) {
    const ExportSetup setup(options);
    CheckRenderable(clip);
    const FrameRange range = setup.FramesOf(clip);

    const WriteSignalGuard guard;
    const StreamFacts facts = FactsOf(clip, range.Count());
    const std::unique_ptr<Target> target = setup.MakeTarget(facts);
    const RenderFrame render = [&clip](std::int64_t index) {
        Frame frame = clip.GetFrame(index);
        const FrameView view = frame.View();
        return RenderedFrame{view, std::move(frame)};
    };
    // Interlaced frames have numbers.
    HashingTarget hashing(*target, !facts.Interlaced());
    Target& used = options.hashFrames ? static_cast<Target&>(hashing) : *target;
    ExportReport report;
    report.frames =
        RunPipeline(render, used, range.first, range.last, JobsOf(options, facts, *target), progress, cancel);
    report.cancelled = report.frames < range.Count();
    if (report.cancelled) return report;
    report.frameHashes = hashing.TakeHashes();
    CompleteExport(clip, options, facts, *target, report);
    return report;
}

} // namespace corvane
