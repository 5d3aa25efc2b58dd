#include <algorithm>
#include <memory>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Compare/CompareText.h"
#include "Compare/Loader/CompareLoader.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/TextFile.h"
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

using JSON = nlohmann::ordered_json;

JSON FramesOf(const Finding& finding) {
    JSON frames = JSON::array();
    for (const FrameRange& range : finding.frames) frames.push_back({range.first, range.last});
    return frames;
}

void PrintJSON(const CompareReport& report) {
    JSON line;
    line["clip"] = report.clip;
    line["video"] = report.video.name;
    line["frames_compared"] = report.framesCompared;
    line["frames_matched"] = report.framesMatched;
    line["psnr"] = JSON::object();
    line["max_error"] = JSON::object();
    for (const ComparedPlane& plane : ComparedPlanes(report)) {
        line["psnr"][plane.key] = plane.errors.psnr ? JSON(*plane.errors.psnr) : JSON(nullptr);
        line["max_error"][plane.key] = plane.errors.largest;
    }
    line["remarks"] = report.remarks;
    line["findings"] = JSON::array();
    for (const Finding& finding : report.findings)
        line["findings"].push_back({{"kind", finding.kind},
                                    {"sentence", finding.sentence},
                                    {"frames", FramesOf(finding)},
                                    {"expected", finding.expected},
                                    {"found", finding.found},
                                    {"cause", finding.cause}});
    // A path may hold any bytes; what is not UTF-8 is replaced.
    Print(line.dump(-1, ' ', false, JSON::error_handler_t::replace) + "\n");
}

} // namespace

int RunCompare(const CompareRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    const auto clip = Clip::OpenFile(bundle, request.clip);
    EndingSignal::Take();
    CompareReport report;
    try {
        ProgressBar bar(!request.quiet);
        const auto progress = [&](std::int64_t done, std::int64_t total) {
            bar.Update(done, std::max(done, total));
        };
        report =
            LoadAndCompareClip(*clip, request.video, request.options, progress, EndingSignal::Cancelled());
    } catch (const Failure& failure) {
        if (!EndingSignal::Cancelled()) throw;
        PrintError(failure.what());
        return EndingSignal::ExitStatus();
    }
    if (request.json)
        PrintJSON(report);
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
