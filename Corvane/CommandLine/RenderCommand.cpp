#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/ClipText.h"
#include "Engine/Failure.h"
#include "Export/ExportText.h"
#include "Export/Files/NumberedName.h"
#include "Export/Loader/ExportLoader.h"
#include "Export/Targets/ExportKinds.h"
#include "ProgressBar.h"
#include "Services/Foundation/FileError.h"

namespace corvane::commandline {

namespace {

namespace fs = std::filesystem;

/// Whether the export makes files that have to be tidied up. A pipe or device is written as it is, and a
/// signal may end the program at once, which helps if nobody reads the pipe.
bool MakesFiles(const std::filesystem::path& output) {
    std::error_code error;
    const auto type = std::filesystem::status(output, error).type();
    return output != "-" &&
           (type == std::filesystem::file_type::not_found || type == std::filesystem::file_type::regular);
}

/// The first file that an export would replace, if any.
std::optional<fs::path> FindReplaced(const Clip& clip, const ExportOptions& options) {
    std::error_code error;
    if (options.output == "-") return std::nullopt;
    const auto numbered = NumberedName::Parse(options.output);
    if (!numbered)
        return fs::is_regular_file(options.output, error) ? std::optional(options.output) : std::nullopt;
    const auto [first, last] = options.frames.value_or(std::pair(std::int64_t{0}, clip.Info().frames - 1));
    try {
        for (const std::int64_t number : numbered->Existing())
            if (number >= first && number <= last) return numbered->For(number);
    } catch (const FileError&) {
        // The export says why its folder can't be used.
    }
    return std::nullopt;
}

/// Renders one clip. Returns the exit status.
int Render(const std::shared_ptr<Bundle>& bundle, const fs::path& path, const fs::path& outputPath,
           const RenderRequest& request) {
    const auto clip = Clip::OpenFile(bundle, path);
    ExportOptions options = request.options;
    options.output = outputPath;
    if (request.frames) options.frames = FramesOf(*request.frames, *clip);
    if (const auto replaced = FindReplaced(*clip, options)) RequireReplaceable(*replaced, request.replacing);
    if (MakesFiles(options.output)) EndingSignal::Take();
    ExportReport report;
    {
        ProgressBar bar(!request.quiet);
        report = LoadAndExportClip(
            *clip, options, [&](std::int64_t done, std::int64_t total) { bar.Update(done, total); },
            EndingSignal::Cancelled());
    }
    const bool toOutput = options.output == "-";
    const std::string output = toOutput ? "standard output" : options.output.string();
    if (report.cancelled) {
        PrintError(fmt::format("{}: the render was cancelled{}.", output,
                               toOutput ? "" : "; nothing is left behind"));
        return EndingSignal::ExitStatus();
    }
    if (!request.quiet && !toOutput)
        PrintLine(fmt::format("{}: {}, {}{}{}{}", output, FramesText(report.frames), BytesText(report.bytes),
                              report.losesAlpha ? ", without the clip's alpha" : "",
                              report.lost.empty() ? "" : "; ", report.lost));
    return kExitDone;
}

/// What the clips of a request are to become, each in the folder.
std::map<fs::path, fs::path> OutputsOf(const RenderRequest& request) {
    const std::string& format = request.options.format;
    if (format.empty())
        throw UsageFailure(
            "--out-dir needs --format, which says what to make of the clips, such as --format mp4");
    // Several pictures of a clip need numbers.
    const ExportKind* const kind = FindExportKind(format);
    const bool numbered = kind != nullptr && kind->IsPicture() && request.frames && request.frames->last &&
                          *request.frames->last != request.frames->first;
    std::map<fs::path, fs::path> outputs;
    const auto add = [&](const fs::path& clip) {
        const fs::path output =
            request.folder / fmt::format("{}{}.{}", clip.stem().string(), numbered ? ".%05d" : "", format);
        if (const auto [at, isNew] = outputs.emplace(output, clip); !isNew)
            throw UsageFailure(
                fmt::format("{} and {} would both become {}; render them into different folders",
                            at->second.string(), clip.string(), output.string()));
    };
    add(request.clip);
    for (const fs::path& clip : request.others) add(clip);
    return outputs;
}

/// Renders each clip into the folder. Returns the status of the first that fails.
int RenderAll(const std::shared_ptr<Bundle>& bundle, const RenderRequest& request) {
    const auto outputs = OutputsOf(request);
    std::error_code error;
    fs::create_directories(request.folder, error);
    if (!fs::is_directory(request.folder))
        throw Failure(fmt::format("{}: the folder can't be made ({}); name another one.",
                                  request.folder.string(), error.message()));
    int first = kExitDone;
    for (const auto& [output, clip] : outputs) {
        int status = kExitFailed;
        try {
            status = Render(bundle, clip, output, request);
        } catch (const Failure& failure) {
            PrintError(failure.what());
            if (dynamic_cast<const UsageFailure*>(&failure) != nullptr) status = kExitUsage;
        }
        if (first == kExitDone) first = status;
        if (EndingSignal::Cancelled()) break;
    }
    return first;
}

} // namespace

int RunRender(const RenderRequest& request) {
    if (request.folder.empty() && request.others.size() != 1)
        throw UsageFailure(
            request.others.empty()
                ? "OUT is required; see 'synthex render --help'"
                : "there is more than one OUT; name one, or a folder for several clips by --out-dir");
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    if (!request.folder.empty()) return RenderAll(bundle, request);
    return Render(bundle, request.clip, request.others.front(), request);
}

} // namespace corvane::commandline
