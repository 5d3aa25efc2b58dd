#include "ColorSwatch.h"

#include <QPainter>
#include <QPixmap>

#include "Checkerboard.h"

namespace corvane::desktop {

namespace {

constexpr int kCheckerSquare = 4;

/// Held to 0 to 1; 0 for what is not a number.
float Component(float value) {
    return value > 0 ? (value < 1 ? value : 1) : 0;
}

} // namespace

QColor ShownColor(const lumui::controls::ColorRGBA& color) {
    return QColor::fromRgbF(Component(color.mRed), Component(color.mGreen), Component(color.mBlue),
                            Component(color.mAlpha));
}

QIcon MakeSwatch(const lumui::controls::ColorRGBA& color, QSize size, qreal ratio) {
    QPixmap picture((size + QSize(kSwatchGap, 0)) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    PaintCheckerboard(painter, QRect(QPoint(), size), kCheckerSquare);
    painter.fillRect(QRect(QPoint(), size), ShownColor(color));
    painter.setPen(QColor(0, 0, 0, 110));
    painter.drawRect(QRect(QPoint(), size - QSize(1, 1)));
    painter.end();
    return QIcon(picture);
}

} // namespace corvane::desktop
