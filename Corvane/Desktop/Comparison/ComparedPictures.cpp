#include "ComparedPictures.h"

#include <algorithm>
#include <cstring>
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

/// The image as Qt's, which is valid as long as its pixels; null without pixels.
QImage View(const ReportImage& image) {
    if (image.pixels.empty()) return {};
    return QImage(reinterpret_cast<const uchar*>(image.pixels.data()), static_cast<int>(image.size.width),
                  static_cast<int>(image.size.height), QImage::Format_RGB32);
}

/// What differs; what was found is scaled to the expected size first.
ReportImage Difference(const PicturePair& pair) {
    if (pair.found.size == pair.expected.size) return DifferenceOf(pair.expected, pair.found, kBrighter);
    const QImage scaled =
        View(pair.found)
            .scaled(View(pair.expected).size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_RGB32);
    ReportImage found = pair.expected;
    std::memcpy(found.pixels.data(), scaled.constBits(), found.pixels.size());
    return DifferenceOf(pair.expected, found, kBrighter);
}

} // namespace

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
    mExpected = View(mPair->expected);
    mFound = View(mPair->found);
    mDifference = {};
    setAccessibleDescription(tr("Picture %1").arg(mPair->number));
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
    const bool both = !mExpected.isNull() && !mFound.isNull();
    if (mView == CompareView::kSideBySide || !both) return PaintSideBySide(painter);
    if (mView == CompareView::kWipe) return PaintWipe(painter);
    if (mDifference.pixels.empty()) mDifference = Difference(*mPair);
    PaintOne(painter, View(mDifference), rect(), tr("Difference, %1 times").arg(kBrighter));
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
    PaintOne(painter, mExpected, QRect(0, 0, half, height()), tr("Expected"));
    PaintOne(painter, mFound, QRect(half + kGap, 0, half, height()), tr("Found"));
}

void ComparedPictures::PaintWipe(QPainter& painter) const {
    const QRect place = Place(rect());
    const int line = place.left() + static_cast<int>(place.width() * mLine);
    painter.setClipRect(QRect(0, 0, line, height()));
    PaintOne(painter, mExpected, rect(), tr("Expected"));
    painter.setClipRect(QRect(line, 0, width() - line, height()));
    PaintOne(painter, mFound, rect(), {});
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
