#pragma once

#include <QPainter>
#include <QRect>

namespace corvane::desktop {

/// Paints the squares that show through what is clear. `square` is their side, in the painter's units. Any
/// thread that may use the painter.
inline void PaintCheckerboard(QPainter& painter, const QRect& area, int square) {
    for (int y = 0; y < area.height(); y += square)
        for (int x = 0; x < area.width(); x += square)
            painter.fillRect(QRect(area.x() + x, area.y() + y, square, square).intersected(area),
                             (x + y) / square % 2 == 0 ? Qt::white : Qt::lightGray);
}

} // namespace corvane::desktop
