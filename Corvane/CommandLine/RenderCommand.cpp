#include <filesystem>
#include <memory>
#include <system_error>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/ClipText.h"
#include "Export/ExportText.h"
#include "Export/Loader/ExportLoader.h"
#include "ProgressBar.h"

namespace corvane::commandline {

namespace {

/// Whether the export makes files that have to be tidied up. A pipe or device is written as it is, and a
/// signal may end the program at once, which helps if nobody reads the pipe.
bool MakesFiles(const std::filesystem::path& output) {
    std::error_code error;
    const auto type = std::filesystem::status(output, error).type();
    return output != "-" &&
           (type == std::filesystem::file_type::not_found || type == std::filesystem::file_type::regular);
}

} // namespace

int RunRender(const RenderRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    const auto clip = Clip::OpenFile(bundle, request.clip);
    if (MakesFiles(request.options.output)) EndingSignal::Take();
    ExportReport report;
    {
        ProgressBar bar(!request.quiet);
        report = LoadAndExportClip(
            *clip, request.options, [&](std::int64_t done, std::int64_t total) { bar.Update(done, total); },
            EndingSignal::Cancelled());
    }
    const bool toOutput = request.options.output == "-";
    const std::string output = toOutput ? "standard output" : request.options.output.string();
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

} // namespace corvane::commandline
