#include "ReportPage.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "CompareText.h"
#include "Engine/ClipText.h"
#include "ReportImage.h"
#include "Services/Foundation/QuotedText.h"

namespace corvane {
namespace {

constexpr std::uint32_t kLongest = 720; // pixels of a side of a picture on the page
constexpr int kGain = 8;                // of differences
constexpr double kTimelineWidth = 960, kTimelineHeight = 240;
constexpr double kCurveWidth = 320, kCurveHeight = 256;

constexpr char kStyle[] = R"(
body { font: 15px/1.45 system-ui, sans-serif; margin: 2em auto; max-width: 1200px; padding: 0 1em; }
table { border-collapse: collapse; width: 100%; } td, th { text-align: left; vertical-align: top;
padding: .3em .8em .3em 0; border-bottom: 1px solid #8885; } td:first-child { white-space: nowrap; }
.row { display: flex; gap: 1em; flex-wrap: wrap; } figure { margin: 0 0 1em; flex: 1 1 300px; }
img { width: 100%; image-rendering: pixelated; } svg { background: #8881; max-width: 100%; }
figcaption { color: #777; })";

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char character : Quoted(text)) {
        switch (character) {
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '&': escaped += "&amp;"; break;
        case '"': escaped += "&quot;"; break;
        default: escaped += character;
        }
    }
    return escaped;
}

std::string RangesText(const std::vector<FrameRange>& ranges) {
    constexpr std::size_t kMost = 12;
    std::string text;
    for (std::size_t i = 0; i < std::min(ranges.size(), kMost); ++i) {
        const auto& [first, last] = ranges[i];
        text += (i == 0 ? "" : ", ") +
                (first == last ? fmt::to_string(first) : fmt::format("{} to {}", first, last));
    }
    if (ranges.size() > kMost) text += fmt::format(" and {} more", ranges.size() - kMost);
    return text;
}

std::string FindingsTable(const CompareReport& report) {
    if (report.findings.empty()) return fmt::format("<p>{}</p>\n", kNothingFoundText);
    std::string table = "<table><tr><th>Kind<th>What was found<th>Frames<th>Expected<th>Found</tr>\n";
    for (const Finding& finding : report.findings)
        table += fmt::format("<tr><td>{}<td>{}<td>{}<td>{}<td>{}</tr>\n", Escaped(finding.kind),
                             Escaped(finding.sentence), RangesText(finding.frames), Escaped(finding.expected),
                             Escaped(finding.found));
    return table + "</table>\n";
}

/// A dot for every picture: to the right its number, upwards the frame that it shows; in red at the bottom if
/// it shows none.
std::string Timeline(const CompareReport& report) {
    if (report.timeline.empty()) return {};
    std::int64_t frames = 1;
    for (const ShownFrame& shown : report.timeline) frames = std::max(frames, shown.frame.value_or(0) + 1);
    const auto pictures = static_cast<double>(report.timeline.back().picture + 1);
    std::string shown, none;
    for (const auto& [picture, frame] : report.timeline) {
        const double x = kTimelineWidth * static_cast<double>(picture) / pictures;
        const double y =
            frame ? (kTimelineHeight - 12) * (1 - static_cast<double>(*frame) / static_cast<double>(frames))
                  : kTimelineHeight - 4;
        (frame ? shown : none) += fmt::format("M{:.1f} {:.1f}h2", x, y);
    }
    return fmt::format(
        "<h2>Timeline</h2>\n<figure><svg viewBox='0 0 {0} {1}' width='{0}' height='{1}'>"
        "<path d='{2}' stroke='#2a7de1' stroke-width='2'/><path d='{3}' stroke='#d33' "
        "stroke-width='6'/></svg>"
        "<figcaption>Pictures 0 to {4} to the right, frames 0 to {5} upwards; red: no frame of the clip."
        "</figcaption></figure>\n",
        kTimelineWidth, kTimelineHeight, shown, none, report.timeline.back().picture, frames - 1);
}

/// The colors of a column of pixels beside the number, from the top to the bottom: of all rows or of a
/// field's.
std::string Curve(const ReportImage& image, int part, std::uint32_t first, std::uint32_t step,
                  const std::string& attributes) {
    const std::uint32_t x = image.size.width - 1 - image.size.width / 16;
    std::string points;
    for (std::uint32_t y = first; y < image.size.height; y += step)
        points += fmt::format("{:.1f},{} ", kCurveWidth * y / image.size.height,
                              255 - std::to_integer<int>(image.At(x, y)[part]));
    return fmt::format("<polyline points='{}' fill='none' {}/>", points, attributes);
}

std::string Curves(const ReportImage& expected, const ReportImage& found, bool interlaced) {
    constexpr const char* kColors[] = {"#36c", "#393", "#c33"}; // B, G, R
    const std::uint32_t fields = interlaced ? 2 : 1;
    std::string lines;
    for (int part = 0; part < 3; ++part)
        for (std::uint32_t field = 0; field < fields; ++field) {
            const std::string stroke = fmt::format("stroke='{}'", kColors[part]);
            lines += Curve(expected, part, field, fields, stroke + " stroke-opacity='.35' stroke-width='5'");
            lines += Curve(found, part, field, fields, stroke);
        }
    return fmt::format("<figure><svg viewBox='0 0 {0} {1}' width='{0}' height='{1}'>{2}</svg><figcaption>R', "
                       "G', B' of the rows, from the top to the bottom: expected broad, found thin"
                       "</figcaption></figure>\n",
                       kCurveWidth, kCurveHeight, lines);
}

std::string Figure(const ReportImage& image, const std::string& caption) {
    return fmt::format("<figure><img src='{}' alt=''><figcaption>{}</figcaption></figure>\n",
                       DataURIOf(image), caption);
}

std::string Worst(const Clip& clip, const ComparedPicture& compared) {
    const StreamFacts facts = FactsOf(clip, clip.Info().frames);
    const std::uint32_t side = std::max(compared.pixels.size.width, compared.pixels.size.height);
    const std::uint32_t step = side > kLongest ? (side + kLongest - 1) / kLongest | 1 : 1;
    const Frame frame = clip.GetFrame(compared.frame);
    const ReportImage expected = ImageOf(frame.View(), facts, step);
    const ReportImage found = ImageOf(compared.pixels, facts.tags.matrix, step);
    return fmt::format("<h3>Picture {}, frame {}</h3>\n<div class='row'>\n", compared.picture,
                       compared.frame) +
           Figure(expected, "Expected") + Figure(found, "Found") +
           Figure(DifferenceOf(expected, found, kGain),
                  fmt::format("Difference, {} times as strong", kGain)) +
           Curves(expected, found, facts.Interlaced()) + "</div>\n";
}

} // namespace

std::string ReportPage(const Clip& clip, const CompareReport& report) {
    std::string page = fmt::format(
        "<!DOCTYPE html>\n<html lang='en'><meta charset='utf-8'><title>{0} beside "
        "{1}</title><style>{2}</style>\n"
        "<h1>{0} beside {1}</h1>\n<p>The clip is {3}, {4}. The video is {5} in {6}, {7}. {8}.</p>\n",
        Escaped(report.video.name), Escaped(report.clip), kStyle, Escaped(FormatText(clip.Info().format)),
        DurationText(clip.Info()), Escaped(report.video.codec), Escaped(report.video.container),
        SizeText(report.video.size), MatchedText(report));
    page += FindingsTable(report);
    for (const std::string& remark : report.remarks) page += fmt::format("<p>{}</p>\n", Escaped(remark));
    page += Timeline(report);
    if (!report.worst.empty()) page += "<h2>The pictures that are furthest off</h2>\n";
    for (const ComparedPicture& compared : report.worst) page += Worst(clip, compared);
    return page + "</html>\n";
}

} // namespace corvane
