#include "RasterkitStrokes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvane::raster {
namespace {

// Half of a stroke's weight, in grid units. The center lines keep this distance from the edges of the grid.
constexpr float kHalfWeight = 7.0f;

struct Point {
    float x, y;
};

constexpr Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y};
}
constexpr float Dot(Point a, Point b) {
    return a.x * b.x + a.y * b.y;
}
// Positive if b lies clockwise of a (y points down).
constexpr float Cross(Point a, Point b) {
    return a.x * b.y - a.y * b.x;
}

// A center line: a segment if `radius` is 0, else the clockwise arc about `center`. An arc that ends where
// it starts is a circle.
struct Stroke {
    Point start, end;
    Point center{};
    float radius = 0.0f;
};

constexpr Stroke Line(Point start, Point end) {
    return {start, end};
}
constexpr Stroke Arc(Point center, float radius, Point start, Point end) {
    return {start, end, center, radius};
}
constexpr Stroke Circle(Point center, float radius) {
    const Point top{center.x, center.y - radius};
    return {top, top, center, radius};
}

constexpr std::array kZero{
    Arc({30, 30}, 23, {7, 30}, {53, 30}),
    Line({53, 30}, {53, 70}),
    Arc({30, 70}, 23, {53, 70}, {7, 70}),
    Line({7, 70}, {7, 30}),
};
constexpr std::array kOne{Line({14, 25}, {34, 7}), Line({34, 7}, {34, 93})};
// The diagonal of the 2 touches its arc, so that the one runs into the other.
constexpr std::array kTwo{
    Arc({30, 30}, 23, {7, 30}, {47.59f, 44.82f}),
    Line({47.59f, 44.82f}, {7, 93}),
    Line({7, 93}, {53, 93}),
};
constexpr std::array kThree{
    Arc({30, 27.5f}, 20.5f, {10.7f, 20.5f}, {30, 48}),
    Line({30, 48}, {24, 48}),
    Arc({30, 70.5f}, 22.5f, {30, 48}, {8.8f, 78.2f}),
};
constexpr std::array kFour{Line({40, 7}, {7, 69}), Line({7, 69}, {53, 69}), Line({40, 7}, {40, 93})};
constexpr std::array kFive{
    Line({49, 7}, {13, 7}),
    Line({13, 7}, {9, 48.24f}),
    Arc({27, 67}, 26, {9, 48.24f}, {7.5f, 84.2f}),
};
constexpr std::array kSix{Circle({30, 70}, 23), Arc({77.45f, 70}, 70.45f, {7, 70}, {44, 8})};
constexpr std::array kSeven{Line({7, 7}, {53, 7}), Line({53, 7}, {23, 93})};
constexpr std::array kEight{Circle({30, 27}, 20), Circle({30, 70}, 23)};
constexpr std::array kNine{Circle({30, 30}, 23), Arc({-17.45f, 30}, 70.45f, {53, 30}, {16, 92})};
constexpr std::array kMinus{Line({10, 50}, {50, 50})};

constexpr std::array<std::span<const Stroke>, kGlyphCount> kGlyphs{
    kZero, kOne, kTwo, kThree, kFour, kFive, kSix, kSeven, kEight, kNine, kMinus};

// Distance of a point from a center line, in grid units.
float Distance(const Stroke& stroke, Point p) {
    const Point fromStart = p - stroke.start;
    if (stroke.radius == 0.0f) {
        const Point along = stroke.end - stroke.start;
        const float at = std::clamp(Dot(fromStart, along) / Dot(along, along), 0.0f, 1.0f);
        const Point off{fromStart.x - at * along.x, fromStart.y - at * along.y};
        return std::sqrt(Dot(off, off));
    }
    const Point start = stroke.start - stroke.center;
    const Point end = stroke.end - stroke.center;
    const Point spoke = p - stroke.center;
    const bool isPastStart = Cross(start, spoke) >= 0.0f;
    const bool isBeforeEnd = Cross(spoke, end) >= 0.0f;
    const bool isWide = Cross(start, end) <= 0.0f; // at least half a circle
    if (isWide ? isPastStart || isBeforeEnd : isPastStart && isBeforeEnd)
        return std::abs(std::sqrt(Dot(spoke, spoke)) - stroke.radius);
    const Point fromEnd = p - stroke.end;
    return std::sqrt(std::min(Dot(fromStart, fromStart), Dot(fromEnd, fromEnd)));
}

// The rectangle that holds a center line; for arcs that of the circle, cut to the grid.
struct Bounds {
    float left, top, right, bottom;
};

Bounds BoundsOf(const Stroke& s) {
    if (s.radius == 0.0f)
        return {std::min(s.start.x, s.end.x), std::min(s.start.y, s.end.y), std::max(s.start.x, s.end.x),
                std::max(s.start.y, s.end.y)};
    return {s.center.x - s.radius, s.center.y - s.radius, s.center.x + s.radius, s.center.y + s.radius};
}

} // namespace

void CoverRow(std::uint32_t glyph, std::uint32_t height, std::uint32_t row, std::uint32_t firstColumn,
              std::span<std::uint8_t> coverage) {
    std::ranges::fill(coverage, std::uint8_t{0});
    const float pixel = static_cast<float>(kGlyphHeight) / static_cast<float>(height); // in grid units
    const float y = (static_cast<float>(row) + 0.5f) * pixel;
    const float reach = kHalfWeight + pixel;
    const auto columns = static_cast<float>(coverage.size());
    const auto columnOf = [&](float x) {
        return static_cast<std::size_t>(
            std::clamp(x / pixel - static_cast<float>(firstColumn), 0.0f, columns));
    };
    for (const Stroke& stroke : kGlyphs[glyph]) {
        const Bounds bounds = BoundsOf(stroke);
        if (y < bounds.top - reach || y > bounds.bottom + reach) continue;
        const std::size_t end = columnOf(bounds.right + reach);
        for (std::size_t i = columnOf(bounds.left - reach); i < end; ++i) {
            const float x = (static_cast<float>(firstColumn + i) + 0.5f) * pixel;
            const float inside = (kHalfWeight - Distance(stroke, {x, y})) / pixel + 0.5f;
            const auto level = static_cast<std::uint8_t>(std::clamp(inside * 255.0f + 0.5f, 0.0f, 255.0f));
            coverage[i] = std::max(coverage[i], level);
        }
    }
}

} // namespace corvane::raster
