#include "Thumbnail.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QPainter>

#include "Desktop/Toolkit/Checkerboard.h"
#include "Export/Picture/PackedReader.h"
#include "Export/Picture/StreamFacts.h"

namespace corvane::desktop {

namespace {

constexpr PackedFormat kBgra{.order = {2, 1, 0, 3}, .components = 4, .bits = 8, .bigEndian = false};

constexpr int kCheckerSquare = 4;

/// The largest size of the clip's shape that fits into `size`.
QSize FittingSize(const ClipFormat& clip, QSize size) {
    const PixelAspect aspect = Reduced(clip.aspect);
    const QSizeF shape(clip.size.width * (static_cast<double>(aspect.numerator) / aspect.denominator),
                       clip.size.height);
    const double factor = std::min(size.width() / shape.width(), size.height() / shape.height());
    return {std::max(1, static_cast<int>(std::lround(shape.width() * factor))),
            std::max(1, static_cast<int>(std::lround(shape.height() * factor)))};
}

/// The frame with as many rows and columns as are useful: of a large one, one in every few. A thumbnail shows
/// fields and gradients, in which a row is like its neighbors except for the field.
QImage ReadSparsely(const Clip& clip, QSize size) {
    const Frame frame = clip.GetFrame(0);
    const FrameView& view = frame.View();
    // Twice the thumbnail's rows, for the scaling to be smooth; an odd step takes rows of both fields.
    const auto step = [](std::uint32_t from, int to) {
        return std::max(1u, from / (2 * static_cast<std::uint32_t>(to))) | 1u;
    };
    const std::uint32_t stepX = step(view.width, size.width()), stepY = step(view.height, size.height());
    const std::uint32_t columns = (view.width - 1) / stepX + 1, rows = (view.height - 1) / stepY + 1;
    QImage image(static_cast<int>(columns), static_cast<int>(rows), QImage::Format_ARGB32);
    PackedReader reader(FactsOf(clip, 1), kBgra);
    reader.Begin(frame.View());
    std::vector<std::byte> bytes(std::size_t{view.width} * 4);
    for (std::uint32_t y = 0; y < rows; ++y) {
        reader.Read(y * stepY, view.width, bytes.data());
        const auto* const from = reinterpret_cast<const QRgb*>(bytes.data());
        auto* const to = reinterpret_cast<QRgb*>(image.scanLine(static_cast<int>(y)));
        for (std::uint32_t x = 0; x < columns; ++x) to[x] = from[std::size_t{x} * stepX];
    }
    return image;
}

} // namespace

QImage MakeThumbnail(const Clip& clip, QSize size) {
    const QSize fitting = FittingSize(clip.Info().format, size);
    const QImage frame = ReadSparsely(clip, fitting);
    QImage thumbnail(fitting, QImage::Format_RGB32);
    QPainter painter(&thumbnail);
    PaintCheckerboard(painter, thumbnail.rect(), kCheckerSquare);
    painter.drawImage(0, 0, frame.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    return thumbnail;
}

} // namespace corvane::desktop
