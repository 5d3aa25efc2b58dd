#include "ExportParts.h"

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "Export/Files/OutputFile.h"
#include "ExportSetup.h"

namespace corvane {

ExportParts DivideExport(const Clip& clip, const ExportOptions& options, std::int64_t count) {
    const ExportSetup setup(options);
    CheckRenderable(clip);
    const FrameRange range = setup.FramesOf(clip);
    const std::unique_ptr<Target> target =
        setup.MakeTarget(FactsOf(clip, range.Count()), setup.IsSeries() ? options.output : kNowhere);
    const std::int64_t unit = target->PartFrames();
    if (unit == 0)
        throw UsageFailure(fmt::format(
            "{}: parts of it can't be joined without encoding again; choose raw, y4m, a series of pictures "
            "or a "
            "codec without dependent frames, such as ffv1, prores or v210, or export it in one piece",
            options.output.string()));
    const std::int64_t units = (range.Count() + unit - 1) / unit;
    count = std::clamp<std::int64_t>(count, 1, units);
    ExportParts parts{.frames = {}, .inPlace = setup.IsSeries()};
    for (std::int64_t part = 0; part < count; ++part) {
        const std::int64_t first = range.first + units * part / count * unit;
        const std::int64_t end = range.first + units * (part + 1) / count * unit;
        parts.frames.emplace_back(first, std::min(end - 1, range.last));
    }
    return parts;
}

ExportReport JoinExport(const Clip& clip, const ExportOptions& options,
                        const std::vector<ExportedPart>& parts, const ExportProgress& progress,
                        const std::atomic<bool>& cancel) {
    const ExportSetup setup(options);
    const FrameRange range = setup.FramesOf(clip);
    const WriteSignalGuard guard;
    const StreamFacts facts = FactsOf(clip, range.Count());
    const std::unique_ptr<Target> target = setup.MakeTarget(facts);
    ExportReport report;
    for (const ExportedPart& part : parts) {
        report.cancelled = !target->Append(part.file, part.frames, cancel);
        if (report.cancelled) return report;
        report.frames += part.frames;
        if (progress) progress(report.frames, range.Count());
    }
    if (report.frames != range.Count())
        throw Failure(fmt::format("{}: its parts hold {} frames and not {}; make them again",
                                  options.output.string(), report.frames, range.Count()));
    CompleteExport(clip, options, facts, *target, report);
    return report;
}

} // namespace corvane
