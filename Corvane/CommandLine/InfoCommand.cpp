#include <memory>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Console.h"
#include "Engine/Clip.h"
#include "Services/Raster/PixelFormats.h"
#include "lummediatypes.h"

namespace corvane::commandline {

namespace {

std::string SizeText(const ClipInfo& info) {
    return fmt::format("{} x {} pixels", info.width, info.height);
}

/// The pixel aspect ratio, and the size at which the picture is to be shown.
std::string AspectText(const ClipInfo& info) {
    const std::string ratio = fmt::format("{}:{}", info.parNumerator, info.parDenominator);
    if (info.parNumerator == 0 || info.parDenominator == 0) return ratio + " (none)";
    if (info.parNumerator == info.parDenominator) return ratio + " (square)";
    const double shown = static_cast<double>(info.width) * info.parNumerator / info.parDenominator;
    return fmt::format("{}, shown at {:.0f} x {}", ratio, shown, info.height);
}

std::string FieldOrderText(const ClipInfo& info) {
    using namespace lummediatypes;
    switch (info.fieldType) {
    case kFieldType_Progressive: return "progressive";
    case kFieldType_UpperFirst: return "upper field first";
    case kFieldType_LowerFirst: return "lower field first";
    default: return fmt::format("interlaced, of the unknown order {}", info.fieldType);
    }
}

std::string RateText(const ClipInfo& info) {
    if (info.ticksPerFrame <= 0) return fmt::format("none ({} ticks a frame)", info.ticksPerFrame);
    const double rate =
        static_cast<double>(lummediatypes::kTicksPerSecond) / static_cast<double>(info.ticksPerFrame);
    return fmt::format("{}/{} ({:.6g} frames a second)", info.scale, info.sampleSize, rate);
}

/// Hours, minutes, seconds and thousandths, rounded down.
std::string TimeText(std::int64_t ticks) {
    constexpr std::int64_t kTicksPerThousandth = lummediatypes::kTicksPerSecond / 1000;
    const std::int64_t thousandths = ticks / kTicksPerThousandth;
    const std::int64_t seconds = thousandths / 1000;
    return fmt::format("{:02}:{:02}:{:02}.{:03}", seconds / 3600, seconds / 60 % 60, seconds % 60,
                       thousandths % 1000);
}

std::string DurationText(const ClipInfo& info) {
    if (info.durationTicks <= 0) return fmt::format("none ({} ticks)", info.durationTicks);
    return fmt::format("{} frame{}, {}", info.frames, info.frames == 1 ? "" : "s",
                       TimeText(info.durationTicks));
}

std::string FormatText(CvPixelFormat format) {
    const PixelFormatRow* const row = FindPixelFormat(format);
    return fmt::format("{} ({}, {})", row == nullptr ? "unknown" : row->name, PixelFormatCharacters(format),
                       PixelFormatHex(format));
}

std::string Text(const Clip& clip) {
    const ClipInfo& info = clip.Info();
    std::string text = clip.Name() + "\n";
    const auto add = [&](const char* label, const std::string& value) {
        text += fmt::format("  {:<14} {}\n", label, value);
    };
    add("Size", SizeText(info));
    add("Pixel aspect", AspectText(info));
    add("Field order", FieldOrderText(info));
    add("Rate", RateText(info));
    add("Duration", DurationText(info));
    add("Pixel format", FormatText(info.pixelFormat));
    if (info.deliveredFormat) add("Delivered as", FormatText(*info.deliveredFormat));
    if (const std::string why = clip.WhyNotRenderable(); !why.empty()) add("Not renderable", why);
    return text;
}

std::string JSONLine(const Clip& clip) {
    const ClipInfo& info = clip.Info();
    nlohmann::ordered_json line;
    line["path"] = clip.Name();
    line["width"] = info.width;
    line["height"] = info.height;
    line["parNumerator"] = info.parNumerator;
    line["parDenominator"] = info.parDenominator;
    line["fieldType"] = info.fieldType;
    line["depth"] = info.depth;
    line["scale"] = info.scale;
    line["sampleSize"] = info.sampleSize;
    line["duration"] = info.duration;
    line["frames"] = info.frames;
    line["pixelFormat"] = PixelFormatNameOrHex(info.pixelFormat);
    line["deliveredFormat"] =
        info.deliveredFormat ? nlohmann::ordered_json(PixelFormatNameOrHex(*info.deliveredFormat)) : nullptr;
    // A path may hold any bytes; what is not UTF-8 is replaced.
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

int RunInfo(const InfoRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    int status = kExitDone;
    bool first = true;
    for (const std::filesystem::path& path : request.clips) {
        try {
            const auto clip = Clip::OpenFile(bundle, path);
            if (!request.json && !first) Print("\n");
            Print(request.json ? JSONLine(*clip) : Text(*clip));
            first = false;
        } catch (const Failure& failure) {
            PrintError(failure.what());
            status = kExitFailed;
        }
    }
    return status;
}

} // namespace corvane::commandline
