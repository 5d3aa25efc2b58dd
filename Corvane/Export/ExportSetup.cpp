#include "ExportSetup.h"

#include <locale>
#include <utility>

#include <boost/algorithm/string/case_conv.hpp>
#include <fmt/format.h>

#include "Engine/SettingsText.h"
#include "Export/Files/NumberedName.h"
#include "Export/Targets/LibavLoader.h"
#include "Export/Targets/PngTarget.h"
#include "Export/Targets/RawTarget.h"
#include "Export/Targets/Y4mTarget.h"

namespace corvane {
namespace {

std::string NameOfKind(const ExportOptions& options) {
    std::string name = options.format;
    if (name.empty() && options.output.has_extension()) name = options.output.extension().string().substr(1);
    if (name.empty())
        throw UsageFailure(
            fmt::format("{}: the name does not tell the kind of output; name it with --format: {}",
                        options.output == "-" ? "standard output" : options.output.string(), ListKinds()));
    boost::algorithm::to_lower(name, std::locale::classic());
    return name == "tif" ? "tiff" : name;
}

// Our row of this name, or one for a container that libav may know by it.
ExportKind KindCalled(const std::string& name) {
    const ExportKind* const row = FindExportKind(name);
    return row != nullptr ? *row : ExportKind{name.c_str(), ExportWriter::kLibav};
}

void CheckOptions(const ExportOptions& options, const ExportKind& kind) {
    if (options.native && !kind.TakesNative())
        throw UsageFailure(fmt::format("{}: frames as delivered can only go to raw, not to {}",
                                       options.output.string(), kind.name));
    if (!options.codec.empty() && !kind.TakesCodec())
        throw UsageFailure(fmt::format("{}: {} has no codecs to choose from; leave out the codec",
                                       options.output.string(), kind.name));
}

} // namespace

ExportSetup::ExportSetup(const ExportOptions& options)
    : mOptions(options), mName(NameOfKind(options)), mKind(KindCalled(mName)),
      mSeries(mKind.IsPicture() && NumberedName::Parse(options.output)) {
    CheckOptions(options, mKind);
}

FrameRange ExportSetup::FramesOf(const Clip& clip) const {
    const bool single = mKind.IsPicture() && !mSeries;
    const std::int64_t frames = clip.Info().frames;
    // A picture of a clip shows its first frame, unless another was asked for.
    const auto [first, last] = mOptions.frames.value_or(std::pair(std::int64_t{0}, single ? 0 : frames - 1));
    if (first < 0 || last >= frames || first > last)
        throw UsageFailure(fmt::format("{}: frames {}:{} are not in the clip; choose from 0:{}", clip.Name(),
                                       first, last, frames - 1));
    if (const std::string reason = clip.WhyNoFrameAt(last); !reason.empty())
        throw UsageFailure(fmt::format("{}: {}", clip.Name(), reason));
    if (single && first != last)
        throw UsageFailure(fmt::format("{} can hold one frame; put a number into the name, such as {}%05d.{}",
                                       mOptions.output.string(), mOptions.output.stem().string(), mName));
    return {first, last};
}

std::unique_ptr<Target> ExportSetup::MakeTarget(const StreamFacts& facts) const {
    return MakeTarget(facts, mOptions.output);
}

std::unique_ptr<Target> ExportSetup::MakeTarget(const StreamFacts& facts,
                                                const std::filesystem::path& output) const {
    switch (mKind.writer) {
    case ExportWriter::kPng: return MakePngTarget(output, facts);
    case ExportWriter::kRaw: return MakeRawTarget(output, mOptions.native, facts);
    case ExportWriter::kY4m: return MakeY4mTarget(output, mOptions.codec, facts);
    case ExportWriter::kLibav:
    case ExportWriter::kLibavPicture: break;
    }
    return MakeLibavTarget({output, mKind.name, mOptions.codec, facts});
}

void CheckRenderable(const Clip& clip) {
    if (const std::string reason = clip.WhyNotRenderable(); !reason.empty())
        throw Failure(fmt::format("{}: {}", clip.Name(), reason));
}

bool LosesAlpha(const Clip& clip, const StreamFacts& facts, const Target& target) {
    return facts.HasAlpha() && !target.KeepsAlpha() && !IsOpaque(ReadSettings(clip.Settings()));
}

void CompleteExport(const Clip& clip, const ExportOptions& options, const StreamFacts& facts, Target& target,
                    ExportReport& report) {
    report.losesAlpha = LosesAlpha(clip, facts, target);
    report.pixels = target.PixelsName();
    target.Complete();
    if (options.beforeNaming) options.beforeNaming(clip, report, target.WorkingPaths());
    report.lost = target.Finish();
    report.bytes = target.BytesWritten();
}

} // namespace corvane
