#include "Export.h"

#include <algorithm>
#include <locale>
#include <memory>
#include <string>
#include <utility>

#include <boost/algorithm/string/case_conv.hpp>
#include <fmt/format.h>

#include "Engine/SettingsText.h"
#include "Export/Files/NumberedName.h"
#include "Export/Files/OutputFile.h"
#include "Export/Picture/StreamFacts.h"
#include "Export/Targets/ExportKinds.h"
#include "Export/Targets/HashingTarget.h"
#include "Export/Targets/LibavLoader.h"
#include "Export/Targets/PngTarget.h"
#include "Export/Targets/RawTarget.h"
#include "Export/Targets/Y4mTarget.h"
#include "FreeMemory.h"
#include "Pipeline.h"
#include "Processors.h"

namespace corvane {
namespace {

std::string NameOfKind(const ExportOptions& options) {
    std::string name = options.format;
    if (name.empty() && options.output.has_extension()) name = options.output.extension().string().substr(1);
    if (name.empty())
        throw UsageFailure(
            fmt::format("{}: the name does not tell the kind of output; name it with --format: {}",
                        options.output == "-" ? "standard output" : options.output.string(), ListKinds()));
    return boost::algorithm::to_lower_copy(name, std::locale::classic());
}

// Our row of this name, or one for a container that libav may know by it.
ExportKind KindCalled(const std::string& name) {
    const ExportKind* const row = FindExportKind(name);
    return row != nullptr ? *row : ExportKind{name.c_str(), ExportWriter::kLibav};
}

// A destination that takes everything.
constexpr const char* kNowhere = "/dev/null";

struct Range {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

Range RangeOf(const Clip& clip, const ExportOptions& options, bool single) {
    const std::int64_t frames = clip.Info().frames;
    // A picture of a clip shows its first frame, unless another was asked for.
    const auto [first, last] = options.frames.value_or(std::pair(std::int64_t{0}, single ? 0 : frames - 1));
    if (first < 0 || last >= frames || first > last)
        throw UsageFailure(fmt::format("{}: frames {}:{} are not in the clip; choose from 0:{}", clip.Name(),
                                       first, last, frames - 1));
    if (const std::string reason = clip.WhyNoFrameAt(last); !reason.empty())
        throw UsageFailure(fmt::format("{}: {}", clip.Name(), reason));
    if (single && first != last)
        throw UsageFailure(
            fmt::format("{} can hold one frame; put a number into the name, such as {}%05d.png",
                        options.output.string(), options.output.stem().string()));
    return {first, last};
}

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

void CheckOptions(const ExportOptions& options, const ExportKind& kind) {
    if (options.native && !kind.TakesNative())
        throw UsageFailure(fmt::format("{}: frames as delivered can only go to raw, not to {}",
                                       options.output.string(), kind.name));
    if (!options.codec.empty() && !kind.TakesCodec())
        throw UsageFailure(fmt::format("{}: {} has no codecs to choose from; leave out the codec",
                                       options.output.string(), kind.name));
}

std::unique_ptr<Target> MakeTarget(const ExportOptions& options, const ExportKind& kind,
                                   const StreamFacts& facts) {
    switch (kind.writer) {
    case ExportWriter::kPng: return MakePngTarget(options.output, facts);
    case ExportWriter::kRaw: return MakeRawTarget(options.output, options.native, facts);
    case ExportWriter::kY4m: return MakeY4mTarget(options.output, options.codec, facts);
    case ExportWriter::kLibav: break;
    }
    return MakeLibavTarget({options.output, kind.name, options.codec, facts});
}

bool LosesAlpha(const Clip& clip, const StreamFacts& facts, const Target& target) {
    return facts.HasAlpha() && !target.KeepsAlpha() && !IsOpaque(ReadSettings(clip.Settings()));
}

} // namespace

ExportPreview PreviewExport(const Clip& clip, const ExportOptions& options) {
    ExportOptions nowhere = options;
    nowhere.output = kNowhere;
    try {
        const std::string name = NameOfKind(options);
        const ExportKind kind = KindCalled(name);
        CheckOptions(options, kind);
        if (std::string reason = clip.WhyNotRenderable(); !reason.empty()) return {std::move(reason), false};
        const StreamFacts facts = FactsOf(clip, clip.Info().frames);
        const std::unique_ptr<Target> target = MakeTarget(nowhere, kind, facts);
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
    const std::string name = NameOfKind(options);
    const ExportKind kind = KindCalled(name);
    CheckOptions(options, kind);
    if (const std::string reason = clip.WhyNotRenderable(); !reason.empty())
        throw Failure(fmt::format("{}: {}", clip.Name(), reason));
    const bool single = kind.IsPicture() && !NumberedName::Parse(options.output);
    const Range range = RangeOf(clip, options, single);
    const std::int64_t total = range.last - range.first + 1;

    const WriteSignalGuard guard;
    const StreamFacts facts = FactsOf(clip, total);
    const std::unique_ptr<Target> target = MakeTarget(options, kind, facts);
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
    report.cancelled = report.frames < total;
    if (report.cancelled) return report;
    report.losesAlpha = LosesAlpha(clip, facts, *target);
    target->Complete();
    report.frameHashes = hashing.TakeHashes();
    report.pixels = target->PixelsName();
    if (options.beforeNaming) options.beforeNaming(clip, report, target->WorkingPaths());
    report.lost = target->Finish();
    report.bytes = target->BytesWritten();
    return report;
}

} // namespace corvane
