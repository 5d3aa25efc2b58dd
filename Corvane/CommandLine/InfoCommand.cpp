#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "Engine/Clip.h"
#include "Engine/ClipFacts.h"
#include "Engine/ClipText.h"
#include "JSONLine.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane::commandline {

namespace {

/// The pixel aspect ratio, and the size at which the picture is to be shown.
std::string ShownText(const ClipFormat& format) {
    const auto [numerator, denominator] = Reduced(format.aspect);
    const std::string ratio = AspectText(format.aspect);
    if (numerator == denominator) return ratio;
    const double width = static_cast<double>(format.size.width) * numerator / denominator;
    return fmt::format("{}, shown at {:.0f} x {}", ratio, width, format.size.height);
}

std::string PixelFormatText(CvPixelFormat format) {
    const PixelFormatRow* const row = FindPixelFormat(format);
    return fmt::format("{} ({}, {})", row == nullptr ? "unknown" : row->name, PixelFormatCharacters(format),
                       PixelFormatHex(format));
}

void PrintText(const Clip& clip) {
    const ClipInfo& info = clip.Info();
    PrintLine(clip.Name());
    const auto add = [&](const char* label, const std::string& value) {
        PrintLine(fmt::format("  {:<14} {}", label, value));
    };
    add("Size", SizeText(info.format.size));
    add("Pixel aspect", ShownText(info.format));
    add("Field order", FieldOrderText(info.format.order));
    add("Rate", RateText(info.format.rate));
    add("Duration", DurationText(info));
    add("Pixel format", PixelFormatText(info.pixelFormat));
    if (const PixelFormatRow* const delivered = FindPixelFormatOf(info.format.raster))
        add("Delivered as", PixelFormatText(delivered->code));
    if (const std::string why = clip.WhyNotRenderable(); !why.empty()) add("Not renderable", why);
}

std::string FactsLine(const Clip& clip) {
    nlohmann::ordered_json line;
    line["path"] = clip.Name();
    line.update(ClipFacts(clip.Info()));
    return JSONLine(line);
}

} // namespace

int RunInfo(const InfoRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    int status = kExitDone;
    bool first = true;
    for (const std::filesystem::path& path : request.clips) {
        try {
            const auto clip = Clip::OpenFile(bundle, path);
            if (!request.json && !first) PrintLine("");
            if (request.json)
                Print(FactsLine(*clip));
            else
                PrintText(*clip);
            first = false;
        } catch (const Failure& failure) {
            PrintError(failure.what());
            status = kExitFailed;
        }
    }
    return status;
}

} // namespace corvane::commandline
