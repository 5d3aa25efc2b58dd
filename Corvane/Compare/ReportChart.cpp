#include "ReportChart.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace corvane {
namespace {

constexpr double kLeft = 62, kRight = 16, kTop = 10, kBottom = 40; // around the field, for numbers and labels

/// The distance between numbers at an axis: 1, 2 or 5 times a power of ten, or a power of two for the levels
/// of 8 bits; at least one, for frames and levels are whole.
double TickStep(const ChartAxis& axis) {
    const double range = axis.most - axis.least;
    if (range == 255) return 64;
    const double least = std::max(range / 6, 1.0);
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double times : {1, 2, 5})
        if (times * power >= least) return times * power;
    return 10 * power;
}

} // namespace

ReportChart::ReportChart(double width, double height, const ChartAxis& across, const ChartAxis& up)
    : mWidth(width), mHeight(height), mAcross(across), mUp(up) {}

double ReportChart::X(double across) const {
    const double share = (across - mAcross.least) / (mAcross.most - mAcross.least);
    return kLeft + mWidth * std::clamp(share, 0.0, 1.0);
}

double ReportChart::Y(double up) const {
    const double share = (up - mUp.least) / (mUp.most - mUp.least);
    return kTop + mHeight * (1 - std::clamp(share, 0.0, 1.0));
}

void ReportChart::AddLine(const std::vector<ChartPoint>& points, const char* color, bool broad) {
    mDrawn += "<polyline points='";
    for (const auto& [across, up] : points) mDrawn += fmt::format("{:.1f},{:.1f} ", X(across), Y(up));
    mDrawn += fmt::format("' fill='none' stroke='{}' {}/>", color,
                          broad ? "stroke-width='6' stroke-opacity='.35'" : "stroke-width='1.5'");
}

void ReportChart::AddDots(const std::vector<ChartPoint>& points, const char* color, double size) {
    mDrawn += "<path d='";
    for (const auto& [across, up] : points)
        mDrawn += fmt::format("M{:.1f} {:.1f}h{:.1f}", X(across) - size / 2, Y(up), size);
    mDrawn += fmt::format("' stroke='{}' stroke-width='{:.1f}'/>", color, size);
}

void ReportChart::AddStripe(double from, double to, const char* color) {
    const double top = Y(to);
    mDrawn += fmt::format(
        "<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='{:.1f}' fill='{}' fill-opacity='.25'/>", kLeft,
        top, mWidth, std::max(Y(from) - top, 1.0), color);
}

std::string ReportChart::Ticks() const {
    std::string ticks;
    double step = TickStep(mAcross);
    for (double at = std::ceil(mAcross.least / step) * step; at <= mAcross.most; at += step)
        ticks += fmt::format("<path d='M{0:.1f} {1:.1f}v5' stroke-width='1'/><text x='{0:.1f}' y='{2:.1f}' "
                             "text-anchor='middle'>{3:.0f}</text>",
                             X(at), kTop + mHeight, kTop + mHeight + 17, at + 0.0);
    step = TickStep(mUp);
    for (double at = std::ceil(mUp.least / step) * step; at <= mUp.most; at += step)
        ticks += fmt::format("<path d='M{0:.1f} {1:.1f}h-5' stroke-width='1'/><text x='{2:.1f}' y='{3:.1f}' "
                             "text-anchor='end'>{4:.0f}</text>",
                             kLeft, Y(at), kLeft - 8, Y(at) + 4, at + 0.0); // not -0
    return ticks;
}

std::string ReportChart::SVG() const {
    const double width = kLeft + mWidth + kRight, height = kTop + mHeight + kBottom;
    return fmt::format(
        "<svg viewBox='0 0 {0:.0f} {1:.0f}' width='{0:.0f}' height='{1:.0f}' font-family='sans-serif' "
        "font-size='12'>{2}<g stroke='#888' fill='none'><rect x='{3}' y='{4}' width='{5}' height='{6}'/></g>"
        "<g stroke='#888' fill='#888' stroke-width='0'>{7}"
        "<text x='{8:.1f}' y='{9:.1f}' text-anchor='middle'>{10}</text>"
        "<text transform='translate(14 {11:.1f}) rotate(-90)' text-anchor='middle'>{12}</text></g></svg>",
        width, height, mDrawn, kLeft, kTop, mWidth, mHeight, Ticks(), kLeft + mWidth / 2, height - 6,
        mAcross.label, kTop + mHeight / 2, mUp.label);
}

} // namespace corvane
