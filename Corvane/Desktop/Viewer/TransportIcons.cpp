#include "TransportIcons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

namespace corvane::desktop {

namespace {

/// All shapes lie in a square with this side.
constexpr qreal kSide = 16;

QPainterPath Triangle(qreal left, qreal right) {
    QPainterPath path;
    path.moveTo(left, 3);
    path.lineTo(right, 8);
    path.lineTo(left, 13);
    path.closeSubpath();
    return path;
}

QPainterPath Bar(qreal left, qreal top, qreal width, qreal height) {
    QPainterPath path;
    path.addRect(left, top, width, height);
    return path;
}

QPainterPath FrameOutline() {
    return Bar(1, 3, 14, 10).subtracted(Bar(2.5, 4.5, 11, 7));
}

QPainterPath Lines(bool upper, bool lower) {
    QPainterPath path;
    for (int i = 0; i < 6; ++i)
        if (i % 2 == 0 ? upper : lower) path.addPath(Bar(2, 2 + i * 2.2, 12, 1.2));
    return path;
}

QPainterPath Loop() {
    QPainterPath ring;
    ring.arcMoveTo(QRectF(3, 3, 10, 10), 60);
    ring.arcTo(QRectF(3, 3, 10, 10), 60, -320);
    QPainterPathStroker pen;
    pen.setWidth(1.7);
    QPainterPath path = pen.createStroke(ring);
    QPainterPath head;
    head.moveTo(12.6, 0.8);
    head.lineTo(12.2, 6.4);
    head.lineTo(7.4, 3.6);
    head.closeSubpath();
    return path.united(head);
}

QPainterPath Corners() {
    QPainterPath path;
    for (const qreal x : {1.0, 15.0})
        for (const qreal y : {3.0, 13.0}) {
            path.addPath(Bar(x < 8 ? x : x - 4, y < 8 ? y : y - 1.5, 4, 1.5));
            path.addPath(Bar(x < 8 ? x : x - 1.5, y < 8 ? y : y - 4, 1.5, 4));
        }
    return path.simplified();
}

QPainterPath Mirrored(const QPainterPath& path) {
    return QTransform(-1, 0, 0, 1, kSide, 0).map(path);
}

QPainterPath PathOf(TransportSymbol symbol) {
    switch (symbol) {
    case TransportSymbol::kPlay: return Triangle(4, 13);
    case TransportSymbol::kPause: return Bar(4, 3, 3, 10).united(Bar(9, 3, 3, 10));
    case TransportSymbol::kNext: return Triangle(6, 13).united(Bar(3, 3, 1.8, 10));
    case TransportSymbol::kPrevious: return Mirrored(PathOf(TransportSymbol::kNext));
    case TransportSymbol::kLast: return Triangle(3, 11).united(Bar(11, 3, 2, 10));
    case TransportSymbol::kFirst: return Mirrored(PathOf(TransportSymbol::kLast));
    case TransportSymbol::kLoop: return Loop();
    case TransportSymbol::kFit: return FrameOutline().united(Bar(4, 6, 8, 4));
    case TransportSymbol::kFull: return Corners().united(Bar(6.5, 6.5, 3, 3));
    case TransportSymbol::kBothFields: return Lines(true, true);
    case TransportSymbol::kUpperField: return Lines(true, false);
    case TransportSymbol::kLowerField: return Lines(false, true);
    }
    return {};
}

class SymbolEngine final : public QIconEngine {
  public:
    explicit SymbolEngine(TransportSymbol symbol) : mSymbol(symbol), mPath(PathOf(symbol)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const QPalette palette = QGuiApplication::palette();
        const QColor color =
            palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                          mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText);
        const qreal scale = std::min(rect.width(), rect.height()) / kSide;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center() - QPointF(kSide, kSide) / 2 * scale);
        painter->scale(scale, scale);
        painter->fillPath(mPath, color);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new SymbolEngine(mSymbol); }

  private:
    const TransportSymbol mSymbol;
    const QPainterPath mPath;
};

} // namespace

QIcon MakeTransportIcon(TransportSymbol symbol) {
    return QIcon(new SymbolEngine(symbol));
}

} // namespace corvane::desktop
