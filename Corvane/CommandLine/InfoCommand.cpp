#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "Engine/Clip.h"
#include "Engine/ClipFacts.h"
#include "Engine/ClipText.h"
#include "Engine/SettingsCheck.h"
#include "Engine/TextFile.h"
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

using Findings = std::vector<SettingsFinding>;

std::string FactsLine(const Clip& clip, const Findings* findings) {
    nlohmann::ordered_json line;
    line["path"] = clip.Name();
    line.update(ClipFacts(clip.Info()));
    if (findings != nullptr) {
        line["findings"] = nlohmann::ordered_json::array();
        for (const SettingsFinding& finding : *findings)
            line["findings"].push_back({{"key", finding.key}, {"sentence", finding.sentence}});
    }
    return JSONLine(line);
}

/// A clip to tell about.
class Source {
  public:
    explicit Source(const std::filesystem::path& path) : mPath(path), mIsInput(path == "-") {}

    /// Throws `Failure` if there is no clip.
    std::unique_ptr<Clip> Open(const std::shared_ptr<Bundle>& bundle) {
        if (!mIsInput) return Clip::OpenFile(bundle, mPath);
        mText = ReadTextInput();
        return Clip::OpenPrefs(bundle, "standard input", mText);
    }
    /// What there is to say of its settings; nothing if they can't be read at all. After `Open`.
    Findings Check() const {
        try {
            return CheckSettings(mIsInput ? mText : ReadTextFile(mPath));
        } catch (const Failure&) {
            return {};
        }
    }
    std::string Name() const { return mIsInput ? "standard input" : mPath.string(); }

  private:
    std::filesystem::path mPath;
    bool mIsInput;
    std::string mText;
};

/// Tells about one clip. Returns the exit status.
int TellAbout(const std::filesystem::path& path, const std::shared_ptr<Bundle>& bundle,
              const InfoRequest& request, bool& first) {
    Source source(path);
    int status = kExitDone;
    Findings findings;
    try {
        const auto clip = source.Open(bundle);
        if (request.strict) findings = source.Check();
        if (!request.json && !first) PrintLine("");
        if (request.json)
            Print(FactsLine(*clip, request.strict ? &findings : nullptr));
        else
            PrintText(*clip);
        first = false;
    } catch (const Failure& failure) {
        PrintError(failure.what());
        status = kExitFailed;
        if (request.strict) findings = source.Check();
    }
    for (const SettingsFinding& finding : findings)
        PrintError(fmt::format("{}: {}", source.Name(), finding.sentence));
    return status == kExitDone && !findings.empty() ? kExitFindings : status;
}

} // namespace

int RunInfo(const InfoRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    int worst = kExitDone;
    bool first = true;
    for (const std::filesystem::path& path : request.clips) {
        const int status = TellAbout(path, bundle, request, first);
        if (worst != kExitFailed && status != kExitDone) worst = status;
    }
    return worst;
}

} // namespace corvane::commandline
