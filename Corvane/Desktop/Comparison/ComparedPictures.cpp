#include "ComparedPictures.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include "Desktop/Viewer/PictureGeometry.h"

namespace corvane::desktop {

namespace {

constexpr int kGap = 8;
constexpr int kBrighter = 8;
constexpr double kKeyStep = 0.01;

} // namespace

QImage DifferenceOf(const QImage& expected, const QImage& found) {
    const QImage other = found.size() == expected.size()
                             ? found
                             : found.scaled(expected.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                   .convertToFormat(QImage::Format_RGB32);
    QImage difference(expected.size(), QImage::Format_RGB32);
    for (int y = 0; y < expected.height(); ++y) {
        const auto* const a = reinterpret_cast<const QRgb*>(expected.constScanLine(y));
        const auto* const b = reinterpret_cast<const QRgb*>(other.constScanLine(y));
        auto* const out = reinterpret_cast<QRgb*>(difference.scanLine(y));
        const auto part = [](int one, int two) { return std::min(std::abs(one - two) * kBrighter, 255); };
        for (int x = 0; x < expected.width(); ++x)
            out[x] = qRgb(part(qRed(a[x]), qRed(b[x])), part(qGreen(a[x]), qGreen(b[x])),
                          part(qBlue(a[x]), qBlue(b[x])));
    }
    return difference;
}

ComparedPictures::ComparedPictures(const ClipFormat& clip, QWidget* parent) : QWidget(parent), mClip(clip) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Expected and found picture"));
}

QSize ComparedPictures::sizeHint() const {
    return {900, 420};
}

QSize ComparedPictures::minimumSizeHint() const {
    return {240, 120};
}

void ComparedPictures::SetPair(std::shared_ptr<const PicturePair> pair) {
    mPair = std::move(pair);
    mDifference = {};
    update();
}

void ComparedPictures::SetView(CompareView view) {
    mView = view;
    setCursor(view == CompareView::kWipe ? Qt::SplitHCursor : Qt::ArrowCursor);
    update();
}

QRect ComparedPictures::Place(const QRect& room) const {
    QRect place(QPoint(), FittedSize(mClip, room.size()));
    place.moveCenter(room.center());
    return place;
}

void ComparedPictures::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Dark));
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!mPair) return;
    const bool both = !mPair->expected.isNull() && !mPair->found.isNull();
    if (mView == CompareView::kSideBySide || !both) return PaintSideBySide(painter);
    if (mView == CompareView::kWipe) return PaintWipe(painter);
    if (mDifference.isNull()) mDifference = DifferenceOf(mPair->expected, mPair->found);
    PaintOne(painter, mDifference, rect(), tr("Difference, %1 times").arg(kBrighter));
}

void ComparedPictures::PaintOne(QPainter& painter, const QImage& image, const QRect& room,
                                const QString& label) const {
    const QRect place = Place(room);
    if (image.isNull())
        painter.fillRect(place, Qt::black);
    else
        painter.drawImage(place, image);
    const QString text = image.isNull() ? mPair->problem : label;
    if (text.isEmpty()) return;
    constexpr int kMargin = 4;
    const QRect inside = place.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    const int flags = image.isNull() ? Qt::AlignCenter | Qt::TextWordWrap : Qt::AlignLeft | Qt::AlignBottom;
    const QRect box =
        painter.boundingRect(inside, flags, text).adjusted(-kMargin, -kMargin, kMargin, kMargin);
    painter.fillRect(box, QColor(0, 0, 0, 160));
    painter.setPen(Qt::white);
    painter.drawText(inside, flags, text);
}

void ComparedPictures::PaintSideBySide(QPainter& painter) const {
    const int half = (width() - kGap) / 2;
    PaintOne(painter, mPair->expected, QRect(0, 0, half, height()), tr("Expected"));
    PaintOne(painter, mPair->found, QRect(half + kGap, 0, half, height()), tr("Found"));
}

void ComparedPictures::PaintWipe(QPainter& painter) const {
    const QRect place = Place(rect());
    const int line = place.left() + static_cast<int>(place.width() * mLine);
    painter.setClipRect(QRect(0, 0, line, height()));
    PaintOne(painter, mPair->expected, rect(), tr("Expected"));
    painter.setClipRect(QRect(line, 0, width() - line, height()));
    PaintOne(painter, mPair->found, rect(), {});
    painter.setClipping(false);
    painter.fillRect(QRect(line, place.top(), 1, place.height()), Qt::white);
}

void ComparedPictures::MoveLine(double share) {
    if (mView != CompareView::kWipe) return;
    mLine = std::clamp(share, 0.0, 1.0);
    update();
}

void ComparedPictures::mousePressEvent(QMouseEvent* event) {
    mouseMoveEvent(event);
}

void ComparedPictures::mouseMoveEvent(QMouseEvent* event) {
    const QRect place = Place(rect());
    MoveLine((event->position().x() - place.left()) / std::max(place.width(), 1));
}

void ComparedPictures::keyPressEvent(QKeyEvent* event) {
    const int way = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
    if (way == 0 || mView != CompareView::kWipe) return QWidget::keyPressEvent(event);
    MoveLine(mLine + way * kKeyStep);
}

} // namespace corvane::desktop
