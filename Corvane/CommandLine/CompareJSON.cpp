#include "CompareJSON.h"

#include "Compare/CompareText.h"

namespace corvane::commandline {

namespace {

using JSON = nlohmann::ordered_json;

JSON FramesOf(const Finding& finding) {
    JSON frames = JSON::array();
    for (const FrameRange& range : finding.frames) frames.push_back({range.first, range.last});
    return frames;
}

} // namespace

JSON CompareJSON(const CompareReport& report) {
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
    return line;
}

} // namespace corvane::commandline
