#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Compare/Loader/CompareLoader.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/TextFile.h"
#include "ProgressBar.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::commandline {

namespace {

/// A plane that was compared: its name for people and for programs.
struct PlaneName {
    const char* text;
    const char* key;
    const PlaneErrors& errors;
};

std::vector<PlaneName> ComparedPlanes(const CompareReport& report) {
    constexpr const char* kText[2][4] = {{"R'", "G'", "B'", "alpha"}, {"Y'", "Cb", "Cr", "alpha"}};
    constexpr const char* kKeys[2][4] = {{"r", "g", "b", "a"}, {"y", "cb", "cr", "a"}};
    std::vector<PlaneName> planes;
    for (std::size_t i = 0; i < 4; ++i)
        if (report.errors[i].measured)
            planes.push_back(
                {kText[report.format.yCbCr][i], kKeys[report.format.yCbCr][i], report.errors[i]});
    return planes;
}

void PrintErrors(const CompareReport& report) {
    std::string psnr, largest;
    for (const PlaneName& plane : ComparedPlanes(report)) {
        const char* const separator = psnr.empty() ? "" : ", ";
        psnr += plane.errors.psnr ? fmt::format("{}{} {:.1f} dB", separator, plane.text, *plane.errors.psnr)
                                  : fmt::format("{}{} exact", separator, plane.text);
        largest += fmt::format("{}{} {}", separator, plane.text, plane.errors.largest);
    }
    if (psnr.empty()) return;
    PrintLine("  PSNR           " + psnr);
    PrintLine(fmt::format("  Largest error  {} of {}", largest, (1u << report.format.bits) - 1));
}

void PrintText(const CompareReport& report, bool quiet) {
    if (!quiet) {
        PrintLine(fmt::format("{} beside {}: {} of {} pictures show a frame of the clip{}", report.video.name,
                              report.clip, report.framesMatched, report.framesCompared,
                              report.cancelled ? "; the rest was not compared" : ""));
        PrintErrors(report);
        PrintLine("");
    }
    for (const Finding& finding : report.findings)
        PrintLine(fmt::format("{:<16} {}", finding.kind, finding.sentence));
    if (quiet) return;
    if (report.findings.empty()) PrintLine("Nothing beyond the tolerance was found.");
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
    for (const PlaneName& plane : ComparedPlanes(report)) {
        line["psnr"][plane.key] = plane.errors.psnr ? JSON(*plane.errors.psnr) : JSON(nullptr);
        line["max_error"][plane.key] = plane.errors.largest;
    }
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
    {
        ProgressBar bar(!request.quiet);
        const auto progress = [&](std::int64_t done, std::int64_t total) {
            bar.Update(done, std::max(done, total));
        };
        report =
            LoadAndCompareClip(*clip, request.video, request.options, progress, EndingSignal::Cancelled());
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
