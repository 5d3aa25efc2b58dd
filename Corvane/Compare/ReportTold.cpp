#include "ReportTold.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "ReportChart.h"

namespace corvane {
namespace {

constexpr std::array kToldNames = {"its pictures", "what it says"};
constexpr std::array kToldColors = {"#2a7de1", "#d22"};

std::string SVG(double width, double height, const std::string& drawn) {
    return fmt::format("<svg viewBox='0 0 {0:.0f} {1:.0f}' width='{0:.0f}' height='{1:.0f}' "
                       "font-family='sans-serif' font-size='12'>{2}</svg>",
                       width, height, drawn);
}

/// Both amounts as bars from 0 on, with their texts.
std::string Bars(const Finding& finding) {
    constexpr double kBegin = 90, kLongestBar = 400, kBarHeight = 20, kStep = 30, kText = 90;
    const std::array texts = {&finding.expected, &finding.found};
    const double most = std::max(finding.amounts[0], finding.amounts[1]);
    std::string drawn;
    for (std::size_t i = 0; i < 2; ++i) {
        const double top = 6 + kStep * static_cast<double>(i),
                     length = kLongestBar * finding.amounts[i] / most;
        drawn += fmt::format("<rect x='{}' y='{}' width='{:.1f}' height='{}' fill='{}'/>"
                             "<g fill='#888'><text x='{}' y='{}' text-anchor='end'>{}</text>"
                             "<text x='{:.1f}' y='{}'>{}</text></g>",
                             kBegin, top, std::max(length, 1.0), kBarHeight, kToldColors[i], kBegin - 8,
                             top + 14, kToldNames[i], kBegin + length + 8, top + 14, *texts[i]);
    }
    return SVG(kBegin + kLongestBar + kText, 2 * kStep + 4, drawn);
}

/// A frame with a circle in it, as its pixels were drawn and as they are shown with another aspect.
std::string Shapes(const Finding& finding, Size size) {
    constexpr double kFrameHeight = 150, kGap = 24;
    double left = 2;
    std::string drawn;
    for (std::size_t i = 0; i < 2; ++i) {
        const double width =
            std::clamp(kFrameHeight * size.width * finding.amounts[i] / size.height, 10.0, 1000.0);
        const double stretched = finding.amounts[i] / finding.amounts[0];
        drawn += fmt::format(
            "<g fill='none' stroke='{0}' stroke-width='2'><rect x='{1:.1f}' y='2' "
            "width='{2:.1f}' height='{3}'/><ellipse cx='{4:.1f}' cy='{5}' rx='{6:.1f}' ry='{7}'/></g>"
            "<text x='{4:.1f}' y='{8}' text-anchor='middle' fill='#888'>{9}: {10}</text>",
            kToldColors[i], left, width, kFrameHeight, left + width / 2, 2 + kFrameHeight / 2,
            std::min(0.4 * kFrameHeight * stretched, width / 2), 0.4 * kFrameHeight, kFrameHeight + 20,
            kToldNames[i], i == 0 ? finding.expected : finding.found);
        left += width + kGap;
    }
    return SVG(left, kFrameHeight + 28, drawn);
}

/// The fields of some frames in the order in which the video says that they are to be shown.
std::string Fields() {
    constexpr int kFields = 12;
    ReportChart chart(400, 200, {"field, in the order that the video says", 0, kFields - 1},
                      {"field of the clip", 0, kFields - 1});
    std::vector<ChartPoint> meant, shown;
    for (int field = 0; field < kFields; ++field) {
        meant.push_back({double(field), double(field)});
        shown.push_back({double(field), double(field ^ 1)});
    }
    chart.AddLine(meant, kToldColors[0], true);
    chart.AddLine(shown, kToldColors[1], false);
    chart.AddDots(shown, kToldColors[1], 6);
    return chart.SVG();
}

} // namespace

std::vector<ToldDrawing> ToldDrawings(const Clip& clip, const CompareReport& report) {
    std::vector<ToldDrawing> drawings;
    const auto add = [&drawings](const Finding& finding, std::string svg, const char* caption) {
        drawings.push_back({finding.kind, {std::move(svg), caption}});
    };
    const auto isBoth = [](std::optional<FieldOrder> order) {
        return order == FieldOrder::kUpperFirst || order == FieldOrder::kLowerFirst;
    };
    for (const Finding& finding : report.findings) {
        const bool hasAmounts = finding.amounts[0] > 0 && finding.amounts[1] > 0;
        if (finding.kind == "time.duration" && hasAmounts)
            add(finding, Bars(finding), "How long the pictures last, and the video says that they do");
        if (finding.kind == "tags.rate" && hasAmounts)
            add(finding, Bars(finding), "Pictures a second, and as many as the video says");
        if (finding.kind == "tags.aspect" && hasAmounts)
            add(finding, Shapes(finding, clip.Info().format.size),
                "A circle in a frame, and as players show it who believe the pixel aspect");
        if (finding.kind == "tags.order" && clip.Info().format.Interlaced() && isBoth(report.video.order))
            add(finding, Fields(), "Motion as players show it who believe the order: back and forth");
    }
    return drawings;
}

} // namespace corvane
