#include "ReportPage.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "ColorAnalysis.h"
#include "CompareText.h"
#include "Engine/ClipText.h"
#include "ReportDrawings.h"
#include "ReportFigures.h"
#include "ReportTold.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane {
namespace {

constexpr char kStyle[] = R"(
:root { color-scheme: light dark; }
body { font: 15px/1.45 system-ui, sans-serif; margin: 2em auto; max-width: 1200px; padding: 0 1em; }
h1 { font-size: 1.5em; overflow-wrap: anywhere; } h2 { margin-top: 1.8em; } h3 { margin-bottom: .3em; }
table { border-collapse: collapse; margin: .8em 0; } td, th { text-align: left; vertical-align: top;
padding: .3em 1.2em .3em 0; border-bottom: 1px solid #8885; } td:first-child { white-space: nowrap; }
.row { display: flex; gap: 1.5em; flex-wrap: wrap; align-items: flex-start; } figure { margin: 0 0 1em; }
.row figure { max-width: 370px; }
img, svg { max-width: 100%; height: auto; } img { image-rendering: pixelated; }
figcaption { color: #888; font-size: .9em; })";

std::string RangesText(const std::vector<FrameRange>& ranges) {
    constexpr std::size_t kMost = 12;
    std::string text;
    for (std::size_t i = 0; i < std::min(ranges.size(), kMost); ++i) {
        const auto& [first, last] = ranges[i];
        text += (i == 0 ? "" : ", ") +
                (first == last ? fmt::to_string(first) : fmt::format("{} to {}", first, last));
    }
    if (ranges.size() > kMost) text += fmt::format(" and {} more", ranges.size() - kMost);
    return text.empty() ? "all" : text;
}

std::string FindingsTable(const CompareReport& report) {
    if (report.findings.empty()) return fmt::format("<p>{}</p>\n", kNothingFoundText);
    std::string table = "<table><tr><th>Kind<th>What was found<th>Frames<th>Expected<th>Found</tr>\n";
    for (const Finding& finding : report.findings)
        table += fmt::format("<tr><td>{}<td>{}<td>{}{}<td>{}<td>{}</tr>\n", EscapedText(finding.kind),
                             EscapedText(finding.sentence), CountsPictures(finding) ? "pictures " : "",
                             RangesText(finding.frames), EscapedText(finding.expected),
                             EscapedText(finding.found));
    return table + "</table>\n";
}

std::string TagsText(const CompareReport& report) {
    const VideoTags& tags = report.video.tags;
    std::string text = EscapedText(report.video.pixelFormat);
    if (report.format.yCbCr)
        text += tags.matrix == 2 ? ", matrix not told"
                                 : fmt::format(", {}", MatrixName(CodingOf(report.format, tags, 0).matrix));
    if (tags.fullRange) text += *tags.fullRange ? ", full range" : ", limited range";
    return text;
}

/// What the clip is, and what the video says of itself.
std::string FactsTable(const Clip& clip, const CompareReport& report) {
    const VideoFacts& video = report.video;
    const ClipFormat& format = clip.Info().format;
    std::string table = "<table><tr><th><th>Clip<th>Video</tr>\n";
    const auto add = [&table](const char* name, const std::string& expected, const std::string& told) {
        table += fmt::format("<tr><td>{}<td>{}<td>{}</tr>\n", name, expected, told);
    };
    constexpr const char* kNotTold = "not told";
    const bool rated = video.averageRate.sampleSize != 0;
    add("Size", SizeText(format.size), SizeText(video.size));
    add("Pixel aspect", AspectText(format.aspect), video.aspect ? AspectText(*video.aspect) : kNotTold);
    add("Fields", FieldOrderText(format.order), video.order ? FieldOrderText(*video.order) : kNotTold);
    add("Rate", RateText(format.rate), rated ? RateText(video.averageRate) : kNotTold);
    add("Length", DurationText(clip.Info()), fmt::format("{} pictures", report.framesCompared));
    add("Samples", EscapedText(PixelFormatNameOrHex(clip.Info().pixelFormat)), TagsText(report));
    add("Coding", "", fmt::format("{} in {}", EscapedText(video.codec), EscapedText(video.container)));
    return table + "</table>\n";
}

std::string ErrorsTable(const CompareReport& report) {
    const std::vector<ComparedPlane> planes = ComparedPlanes(report);
    if (planes.empty()) return {};
    std::string table = "<table><tr><th>Plane<th>PSNR<th>Largest error</tr>\n";
    for (const ComparedPlane& plane : planes)
        table += fmt::format("<tr><td>{}<td>{}<td>{} of {}</tr>\n", plane.text,
                             plane.errors.psnr ? fmt::format("{:.1f} dB", *plane.errors.psnr) : "exact",
                             plane.errors.largest, (1u << report.format.bits) - 1);
    return table + "</table>\n";
}

std::string FigureOf(const Drawing& drawing, std::string_view id) {
    if (drawing.svg.empty()) return {};
    return fmt::format("<figure id='{}'>{}<figcaption>{}</figcaption></figure>\n", id, drawing.svg,
                       drawing.caption);
}

std::string Told(const Clip& clip, const CompareReport& report) {
    std::string figures;
    for (const auto& [kind, drawing] : ToldDrawings(clip, report)) figures += FigureOf(drawing, kind);
    return figures.empty() ? "" : "<h2>What the video says of itself</h2>\n" + figures;
}

std::string Colors(const Clip& clip, const CompareReport& report) {
    if (report.colors.empty()) return {};
    const ColorFigures figures = FiguresOf(report.colors);
    std::string charts;
    for (const Drawing& drawing : ColorDrawings(clip, report.colors))
        charts += FigureOf(drawing, charts.empty() ? "levels" : fmt::format("colors-{}", charts.size()));
    return fmt::format(
        "<h2>Colors</h2>\n<p>Colors are off by {:.1f} steps of 255 on average and {:.1f} at most "
        "(delta E 2000: {:.1f} and {:.1f}).</p>\n<div class='row'>\n{}</div>\n",
        figures.meanSteps, figures.mostSteps, figures.meanDeltaE, figures.mostDeltaE, charts);
}

std::string Timeline(const Clip& clip, const CompareReport& report) {
    if (report.timeline.empty()) return {};
    return "<h2>Timeline</h2>\n" + FigureOf(TimelineDrawing(report), "timeline") +
           FigureOf(TimesDrawing(report, clip.Info().ticksPerFrame), "times");
}

std::string Pictures(const Clip& clip, const CompareReport& report) {
    const std::vector<ReportFigure> figures = FiguresFor(report);
    std::string text = figures.empty() ? "" : "<h2>Pictures</h2>\n";
    for (const ReportFigure& figure : figures) {
        const FigureImages images = ImagesOf(clip, *figure.compared);
        std::string kinds, said;
        for (const Finding* const finding : figure.findings) {
            kinds += (kinds.empty() ? "" : " ") + finding->kind;
            said += fmt::format("<p>{}</p>\n", EscapedText(finding->sentence));
        }
        text += fmt::format("<section data-kinds='{}'>\n<h3>{}</h3>\n{}", EscapedText(kinds),
                            TitleOf(*figure.compared, figure.isWorst), said);
        for (const CaptionedImage& image : images.strips)
            text += fmt::format("<figure><img src='{}' alt=''><figcaption>{}</figcaption></figure>\n",
                                DataURIOf(image.image), image.caption);
        text += FigureOf(images.rows, fmt::format("rows-{}", figure.compared->picture));
        text += "</section>\n";
    }
    return text;
}

} // namespace

std::string ReportPage(const Clip& clip, const CompareReport& report) {
    std::string page =
        fmt::format("<!DOCTYPE html>\n<html lang='en'><meta charset='utf-8'>"
                    "<title>{0} beside {1}</title><style>{2}</style>\n"
                    "<h1>{0} beside {1}</h1>\n<p>{3}.</p>\n",
                    EscapedText(report.video.name), EscapedText(report.clip), kStyle, MatchedText(report));
    page += FindingsTable(report);
    for (const std::string& remark : report.remarks) page += fmt::format("<p>{}</p>\n", EscapedText(remark));
    page += "<div class='row'>\n" + FactsTable(clip, report) + ErrorsTable(report) + "</div>\n";
    page += Timeline(clip, report) + Told(clip, report) + Colors(clip, report) + Pictures(clip, report);
    return page + "</html>\n";
}

} // namespace corvane
