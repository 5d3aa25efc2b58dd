#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "Engine/ClipText.h"
#include "Export/ExportText.h"
#include "Export/Loader/ExportLoader.h"
#include "ProgressBar.h"

namespace corvane::commandline {

namespace {

std::atomic<bool> gCancel{false};
std::atomic<int> gSignal{0};

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may touch nothing else");

// The first signal cancels the export. A second one ends the program, whatever holds it: by `quick_exit`,
// which a handler may call, and which removes the temporary file if it can.
void OnEndingSignal(int signal) {
    if (gCancel.exchange(true)) {
        ::signal(signal, SIG_DFL);
        std::quick_exit(128 + signal);
    }
    gSignal = signal;
}

/// Whether the export makes files that have to be tidied up. A pipe or device is written as it is, and a
/// signal may end the program at once, which helps if nobody reads the pipe.
bool MakesFiles(const std::filesystem::path& output) {
    std::error_code error;
    const auto type = std::filesystem::status(output, error).type();
    return output != "-" &&
           (type == std::filesystem::file_type::not_found || type == std::filesystem::file_type::regular);
}

/// Lets the signals that end a program end the export instead, which then tidies up.
void TakeEndingSignals() {
    struct sigaction action {};
    action.sa_handler = OnEndingSignal;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        ::sigaction(signal, nullptr, &before);
        // Whoever started the program may have it ignore a signal, as nohup does.
        if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

int RunRender(const RenderRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    const auto clip = Clip::OpenFile(bundle, request.clip);
    if (MakesFiles(request.options.output)) TakeEndingSignals();
    ExportReport report;
    {
        ProgressBar bar(!request.quiet);
        report = LoadAndExportClip(
            *clip, request.options, [&](std::int64_t done, std::int64_t total) { bar.Update(done, total); },
            gCancel);
    }
    const bool toOutput = request.options.output == "-";
    const std::string output = toOutput ? "standard output" : request.options.output.string();
    if (report.cancelled) {
        PrintError(fmt::format("{}: the render was cancelled{}.", output,
                               toOutput ? "" : "; nothing is left behind"));
        return 128 + gSignal;
    }
    if (!request.quiet && !toOutput)
        PrintLine(fmt::format("{}: {}, {}{}{}{}", output, FramesText(report.frames), BytesText(report.bytes),
                              report.losesAlpha ? ", without the clip's alpha" : "",
                              report.lost.empty() ? "" : "; ", report.lost));
    return kExitDone;
}

} // namespace corvane::commandline
