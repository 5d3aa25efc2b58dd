#pragma once

#include <string>
#include <vector>

namespace corvane {

/// A point of a chart, in the units of its axes.
struct ChartPoint {
    double across = 0;
    double up = 0;
};

/// What an axis shows: from `least` to `most`, which is more.
struct ChartAxis {
    const char* label;
    double least = 0;
    double most = 1;
};

/// A drawing of lines and dots between two axes. Any thread, one at a time; all of it fails only for want of
/// memory.
class ReportChart {
  public:
    /// The field that the axes enclose has `width` x `height` pixels.
    ReportChart(double width, double height, const ChartAxis& across, const ChartAxis& up);

    /// A line through points, as far as they lie in the field: a broad, pale one to compare with, or a thin
    /// one. `color` is CSS's.
    void AddLine(const std::vector<ChartPoint>& points, const char* color, bool broad);
    /// A square dot of `size` pixels at each point; points outside are drawn at the edge.
    void AddDots(const std::vector<ChartPoint>& points, const char* color, double size);
    /// A pale stripe across the field from one value of the upward axis to another.
    void AddStripe(double from, double to, const char* color);

    /// The drawing as an `svg` element.
    std::string SVG() const;

  private:
    double X(double across) const;
    double Y(double up) const;
    std::string Ticks() const;

    const double mWidth, mHeight;
    const ChartAxis mAcross, mUp;
    std::string mDrawn;
};

} // namespace corvane
