#include "ReportDrawings.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "ColorVerdict.h"
#include "Engine/SettingsText.h"
#include "ReportChart.h"
#include "lummediatypes.h"

namespace corvane {
namespace {

constexpr std::array kColors = {"#d22", "#2a2", "#24e"}; // R, G, B
constexpr char kBlue[] = "#2a7de1", kRed[] = "#d22";
constexpr char kExpectedFound[] = "R', G', B': expected broad, found thin";
constexpr double kMostLevel = 255;
constexpr double kTimelineWidth = 900;

/// The expected and the found color of a row, as a viewer sees them. What the fields show of each other is no
/// matter of color.
std::pair<Color, Color> ColorsOf(const ColorSample& sample) {
    return {Decode(PredictedCodes(sample, {}), sample.coding), Decode(sample.found, sample.coding)};
}

/// As large as `count` dots beside each other can be, within reason.
double DotSize(double count) {
    return std::clamp(kTimelineWidth / count * 0.6, 2.0, 6.0);
}

Drawing LevelsDrawing(const std::vector<ColorSample>& colors) {
    ReportChart chart(300, 300, {"expected level", 0, kMostLevel}, {"found level", 0, kMostLevel});
    chart.AddLine({{0, 0}, {kMostLevel, kMostLevel}}, "#888", true);
    for (std::size_t part = 0; part < 3; ++part) {
        std::set<std::pair<long, long>> seen; // many rows are of one color
        std::vector<ChartPoint> points;
        for (const ColorSample& sample : colors) {
            const auto [expected, found] = ColorsOf(sample);
            const ChartPoint point{expected[part] * kMostLevel, found[part] * kMostLevel};
            if (seen.emplace(std::lround(point.across), std::lround(point.up)).second)
                points.push_back(point);
        }
        chart.AddDots(points, kColors[part], points.size() < 50 ? 5 : 2);
    }
    return {chart.SVG(), "Levels of R', G', B': on the diagonal nothing is changed"};
}

/// The sample of each frame that is nearest to a place of the frame, of rows that `wanted` says.
template <class Wanted>
std::map<std::int64_t, const ColorSample*> Nearest(const std::vector<ColorSample>& colors, double place,
                                                   const Wanted& wanted) {
    std::map<std::int64_t, const ColorSample*> nearest;
    for (const ColorSample& sample : colors) {
        if (!wanted(sample)) continue;
        const ColorSample*& best = nearest[sample.frame];
        if (best == nullptr || std::abs(sample.place - place) < std::abs(best->place - place)) best = &sample;
    }
    return nearest;
}

Drawing FramesDrawing(const std::map<std::int64_t, const ColorSample*>& samples, const char* what) {
    if (samples.size() < 2) return {};
    const auto first = static_cast<double>(samples.begin()->first);
    ReportChart chart(300, 300, {"frame", first, static_cast<double>(samples.rbegin()->first)},
                      {"level", 0, kMostLevel});
    for (std::size_t part = 0; part < 3; ++part) {
        std::vector<ChartPoint> expected, found;
        for (const auto& [frame, sample] : samples) {
            const auto colors = ColorsOf(*sample);
            expected.push_back({static_cast<double>(frame), colors.first[part] * kMostLevel});
            found.push_back({static_cast<double>(frame), colors.second[part] * kMostLevel});
        }
        chart.AddLine(expected, kColors[part], true);
        chart.AddLine(found, kColors[part], false);
    }
    return {chart.SVG(), fmt::format("{} over the frames; {}", what, kExpectedFound)};
}

/// The colors of a column of pixels, of every `step`-th row from `first` on.
std::vector<ChartPoint> Column(const ReportImage& image, std::size_t part, std::uint32_t first,
                               std::uint32_t step) {
    const std::uint32_t x = image.size.width - 1 - image.size.width / 16;
    std::vector<ChartPoint> points;
    for (std::uint32_t y = first; y < image.size.height; y += step)
        points.push_back({100.0 * y / std::max(image.size.height - 1, 1u),
                          std::to_integer<int>(image.At(x, y)[2 - part]) + 0.0});
    return points;
}

} // namespace

Drawing TimelineDrawing(const CompareReport& report) {
    std::int64_t frames = 2;
    std::vector<ChartPoint> shown, none;
    for (const auto& [picture, frame, time] : report.timeline) {
        frames = std::max(frames, frame.value_or(0) + 1);
        (frame ? shown : none)
            .push_back({static_cast<double>(picture), static_cast<double>(frame.value_or(0))});
    }
    for (const Finding& finding : report.findings)
        if (finding.kind == "frames.missing") frames = std::max(frames, finding.frames.back().last + 1);
    const double last = std::max(static_cast<double>(report.timeline.back().picture), 1.0);
    ReportChart chart(kTimelineWidth, 220, {"picture of the video", 0, last},
                      {"frame of the clip", 0, static_cast<double>(frames - 1)});
    for (const Finding& finding : report.findings)
        if (finding.kind == "frames.missing")
            for (const auto& [from, to] : finding.frames)
                chart.AddStripe(static_cast<double>(from) - 0.5, static_cast<double>(to) + 0.5, kRed);
    const double size = DotSize(last);
    chart.AddDots(shown, kBlue, size);
    chart.AddDots(none, kRed, size + 2);
    std::string caption = "A dot for each picture";
    if (!none.empty()) caption += "; red at the bottom: shows no frame of the clip";
    if (std::ranges::find(report.findings, "frames.missing", &Finding::kind) != report.findings.end())
        caption += "; red stripes: frames that are missing";
    return {chart.SVG(), caption};
}

Drawing TimesDrawing(const CompareReport& report, std::int64_t ticksPerFrame) {
    const auto [scale, sampleSize] = report.video.timeBase;
    const ShownFrame* first = nullptr;
    std::vector<ChartPoint> points;
    double least = -5, most = 5;
    for (const ShownFrame& shown : report.timeline) {
        if (sampleSize == 0 || !shown.frame || !shown.time) continue;
        if (first == nullptr) first = &shown;
        const double due = static_cast<double>(*shown.frame - *first->frame) *
                           static_cast<double>(ticksPerFrame) /
                           static_cast<double>(lummediatypes::kTicksPerSecond);
        const double late = static_cast<double>(*shown.time - *first->time) * scale / sampleSize - due;
        points.push_back({static_cast<double>(shown.picture), late * 1000});
        least = std::min(least, late * 1000);
        most = std::max(most, late * 1000);
    }
    if (points.size() < 2) return {};
    ReportChart chart(kTimelineWidth, 120, {"picture of the video", 0, points.back().across},
                      {"late by ms", std::floor(least), std::ceil(most)});
    chart.AddLine({{0, 0}, {points.back().across, 0}}, "#888", true);
    chart.AddDots(points, kBlue, DotSize(points.back().across));
    return {chart.SVG(),
            "How much later a picture is shown than its frame in the clip, counted from the first one"};
}

std::vector<Drawing> ColorDrawings(const Clip& clip, const std::vector<ColorSample>& colors) {
    std::vector<Drawing> drawings{LevelsDrawing(colors)};
    const auto add = [&](double place, const char* what, auto wanted) {
        Drawing drawing = FramesDrawing(Nearest(colors, place, wanted), what);
        if (!drawing.svg.empty()) drawings.push_back(std::move(drawing));
    };
    const bool ofFields = clip.Info().format.Interlaced() && ReadSettings(clip.Settings()).renderFormat == 0;
    if (ofFields) {
        const auto isOf = [](Parity parity) {
            return [parity](const ColorSample& sample) { return sample.parity == parity; };
        };
        add(0.5, "The upper field's color", isOf(Parity::kEven));
        add(0.5, "The lower field's color", isOf(Parity::kOdd));
        add(0.5, "The color of rows that mix the fields", isOf(Parity::kBoth));
    } else {
        const auto isTop = [](const ColorSample& sample) { return sample.place < 0.1; };
        const auto isBottom = [](const ColorSample& sample) { return sample.place > 0.9; };
        add(0, "The color at the top", isTop);
        add(1, "The color at the bottom", isBottom);
    }
    return drawings;
}

Drawing RowsDrawing(const ReportImage& expected, const ReportImage& found, bool interlaced) {
    ReportChart chart(300, 180, {"row, in percent of the height", 0, 100}, {"level", 0, kMostLevel});
    const std::uint32_t fields = interlaced ? 2 : 1;
    for (std::size_t part = 0; part < 3; ++part)
        for (std::uint32_t field = 0; field < fields; ++field) {
            chart.AddLine(Column(expected, part, field, fields), kColors[part], true);
            chart.AddLine(Column(found, part, field, fields), kColors[part], false);
        }
    return {chart.SVG(), fmt::format("Rows from the top to the bottom{}; {}",
                                     interlaced ? ", each field by itself" : "", kExpectedFound)};
}

} // namespace corvane
