#include <algorithm>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Compare/CompareText.h"
#include "Compare/Loader/CompareLoader.h"
#include "CompareFamily.h"
#include "CompareJSON.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/TextFile.h"
#include "JSONLine.h"
#include "ProgressBar.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::commandline {

namespace {

void PrintText(const CompareReport& report, bool quiet) {
    if (!quiet) {
        PrintLine(fmt::format("{} beside {}: {}", report.video.name, report.clip, MatchedText(report)));
        if (const std::string psnr = PSNRText(report); !psnr.empty()) {
            PrintLine("  PSNR           " + psnr);
            PrintLine("  Largest error  " + LargestErrorText(report));
        }
        PrintLine("");
    }
    for (const Finding& finding : report.findings)
        PrintLine(fmt::format("{:<16} {}", finding.kind, finding.sentence));
    if (quiet) return;
    if (report.findings.empty()) PrintLine(kNothingFoundText);
    for (const std::string& remark : report.remarks) PrintLine(remark);
}

} // namespace

int RunCompare(const CompareRequest& request) {
    if (MeansFamily(request.clip)) return CompareFamily(request);
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    const auto clip = Clip::OpenFile(bundle, request.clip);
    CompareOptions options = request.options;
    if (request.frames) {
        const auto [first, last] = FramesOf(*request.frames, *clip);
        options.frames = {first, last};
    }
    EndingSignal::Take();
    CompareReport report;
    try {
        ProgressBar bar(!request.quiet);
        const auto progress = [&](std::int64_t done, std::int64_t total) {
            bar.Update(done, std::max(done, total));
        };
        report = LoadAndCompareClip(*clip, request.video, options, progress, EndingSignal::Cancelled());
    } catch (const Failure& failure) {
        if (!EndingSignal::Cancelled()) throw;
        PrintError(failure.what());
        return EndingSignal::ExitStatus();
    }
    if (request.json)
        Print(JSONLine(CompareJSON(report)));
    else
        PrintText(report, request.quiet);
    if (!request.report.empty()) {
        const std::string lost = WriteTextFile(request.report, LoadAndMakeReportPage(*clip, report));
        // Standard output is for the one JSON object.
        if (!lost.empty() && request.json)
            PrintError(SavedText(request.report, lost));
        else if (!request.json && !request.quiet)
            PrintLine(SavedText(request.report, lost));
    }
    if (report.cancelled) return EndingSignal::ExitStatus();
    return report.findings.empty() ? kExitDone : kExitFindings;
}

} // namespace corvane::commandline
