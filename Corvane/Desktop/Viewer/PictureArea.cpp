#include "PictureArea.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace corvane::desktop {

namespace {

// Deliberate: the same in light and dark palettes, so that the same picture looks the same.
constexpr QRgb kSurround = 0xFF303030;
constexpr QRgb kMessageColor = 0xFFE0E0E0;

constexpr int kSquare = 8; // device-independent pixels of the checkerboard
constexpr int kPanStep = 40;
constexpr int kMessageMargin = 24;

} // namespace

PictureArea::PictureArea(QWidget* parent) : QAbstractScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 90);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setCursor(Qt::CrossCursor);
    setAccessibleName(tr("Picture"));
}

void PictureArea::SetClip(const ClipFormat& clip) {
    mClip = clip;
    LayOut();
}

void PictureArea::SetFit(bool fit) {
    mFit = fit;
    const Qt::ScrollBarPolicy policy = fit ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded;
    setHorizontalScrollBarPolicy(policy);
    setVerticalScrollBarPolicy(policy);
    LayOut();
}

void PictureArea::SetFields(FieldView fields) {
    mFields = fields;
    LayOut();
}

QSize PictureArea::Room() const {
    const QSizeF size = QSizeF(viewport()->size()) * viewport()->devicePixelRatioF();
    return {std::max(static_cast<int>(std::floor(size.width())), 1),
            std::max(static_cast<int>(std::floor(size.height())), 1)};
}

void PictureArea::LayOut() {
    mSize = mFit ? FittedSize(mClip, Room()) : FullSize(mClip);
    const QSize room = Room();
    horizontalScrollBar()->setRange(0, std::max(mSize.width() - room.width(), 0));
    verticalScrollBar()->setRange(0, std::max(mSize.height() - room.height(), 0));
    horizontalScrollBar()->setPageStep(room.width());
    verticalScrollBar()->setPageStep(room.height());
    horizontalScrollBar()->setSingleStep(kPanStep);
    verticalScrollBar()->setSingleStep(kPanStep);
    viewport()->update();
    Q_EMIT LookChanged();
}

QRect PictureArea::Place() const {
    const QSize room = Room();
    const auto corner = [](int space, int size, const QScrollBar* bar) {
        return size <= space ? (space - size) / 2 : -bar->value();
    };
    return {QPoint(corner(room.width(), mSize.width(), horizontalScrollBar()),
                   corner(room.height(), mSize.height(), verticalScrollBar())),
            mSize};
}

PictureLook PictureArea::GetLook() const {
    const QRect place = Place();
    const QRect seen = place & QRect(QPoint(), Room());
    const int square = std::max(static_cast<int>(std::lround(kSquare * viewport()->devicePixelRatioF())), 1);
    return {mFields, mSize, seen.translated(-place.topLeft()), square};
}

double PictureArea::GetZoom() const {
    return mClip.size.height == 0 ? 0 : 100.0 * mSize.height() / mClip.size.height;
}

void PictureArea::ShowPicture(const PicturePointer& picture, std::int64_t tag) {
    mPicture = picture;
    mTag = tag;
    mPainted = false;
    mMessage = picture->problem;
    setAccessibleDescription(mMessage);
    viewport()->update();
}

void PictureArea::ReleaseFrame() {
    if (!mPicture || !mPicture->frame) return;
    Picture picture = *mPicture;
    picture.frame = nullptr;
    mPicture = std::make_shared<const Picture>(std::move(picture));
}

void PictureArea::ShowMessage(const QString& text) {
    mPicture = nullptr;
    mMessage = text;
    setAccessibleDescription(text);
    viewport()->update();
}

void PictureArea::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    if (!mPicture || mPicture->image.isNull()) {
        painter.fillRect(viewport()->rect(), QColor(kSurround));
        const QRect room = viewport()->rect().adjusted(kMessageMargin, 0, -kMessageMargin, 0);
        painter.setPen(QColor(kMessageColor));
        painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, mMessage);
    } else {
        PaintPicture(painter);
    }
    painter.end();
    if (mPicture && !std::exchange(mPainted, true)) Q_EMIT Painted(mPicture, mTag);
}

void PictureArea::PaintPicture(QPainter& painter) {
    // A picture for another size is stretched to the present one until the next one is there.
    const PictureLook& look = mPicture->request.look;
    const QRectF place(Place());
    const qreal x = place.width() / look.size.width();
    const qreal y = place.height() / look.size.height();
    const QRectF part(place.left() + look.part.left() * x, place.top() + look.part.top() * y,
                      look.part.width() * x, look.part.height() * y);
    const qreal ratio = viewport()->devicePixelRatioF();
    const QRectF target(part.topLeft() / ratio, part.size() / ratio);
    // The surround reaches under the picture's edges, which lie between whole pixels if the ratio isn't
    // whole.
    const QRect inner = target.toAlignedRect().adjusted(1, 1, -1, -1);
    painter.setClipRegion(QRegion(viewport()->rect()) - QRegion(inner));
    painter.fillRect(viewport()->rect(), QColor(kSurround));
    painter.setClipping(false);
    painter.drawImage(target, mPicture->image);
}

void PictureArea::resizeEvent(QResizeEvent*) {
    LayOut();
}

void PictureArea::scrollContentsBy(int, int) {
    viewport()->update();
    Q_EMIT LookChanged();
}

std::optional<QPoint> PictureArea::PixelAt(QPointF place) const {
    if (!mPicture || mPicture->image.isNull() || !mPicture->frame) return std::nullopt;
    const QPointF device = place * viewport()->devicePixelRatioF();
    const QPoint at(static_cast<int>(std::floor(device.x())), static_cast<int>(std::floor(device.y())));
    const QRect picture = Place();
    if (!picture.contains(at)) return std::nullopt;
    const FrameView& frame = mPicture->frame->View();
    const QPoint inside = at - picture.topLeft();
    const std::uint32_t x = UnderPlace(frame.width, picture.width(), inside.x());
    std::uint32_t y = UnderPlace(frame.height, picture.height(), inside.y());
    const ShownLines lines = LinesOf(frame.height, mPicture->request.look.fields);
    y = lines.RowOf(std::min(y / lines.step, lines.count - 1));
    return QPoint(static_cast<int>(x), static_cast<int>(y));
}

bool PictureArea::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Leave) {
        mProbe.reset();
        Q_EMIT HoverEnded();
    }
    if (event->type() == QEvent::MouseMove) {
        mProbe = static_cast<QMouseEvent*>(event)->position();
        Q_EMIT Hovered(*mProbe);
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void PictureArea::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const QSize room = Room();
    if (mSize.width() <= room.width() && mSize.height() <= room.height()) return;
    mDragged = event->position().toPoint();
    viewport()->setCursor(Qt::ClosedHandCursor);
}

void PictureArea::mouseMoveEvent(QMouseEvent* event) {
    if (!mDragged) return;
    const QPoint now = event->position().toPoint();
    const QPointF moved = QPointF(*mDragged - now) * viewport()->devicePixelRatioF();
    mDragged = now;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + static_cast<int>(moved.x()));
    verticalScrollBar()->setValue(verticalScrollBar()->value() + static_cast<int>(moved.y()));
}

void PictureArea::mouseReleaseEvent(QMouseEvent*) {
    mDragged.reset();
    viewport()->setCursor(Qt::CrossCursor);
}

void PictureArea::Pan(QPoint way) {
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + way.x() * kPanStep);
    verticalScrollBar()->setValue(verticalScrollBar()->value() + way.y() * kPanStep);
}

/// By a pixel of the frame, or by one of the screen if those are larger.
void PictureArea::MoveProbe(QPoint way) {
    if (mClip.size.width == 0 || mClip.size.height == 0) return;
    const qreal ratio = viewport()->devicePixelRatioF();
    const QPointF step(std::max(1.0, mSize.width() / static_cast<qreal>(mClip.size.width)),
                       std::max(1.0, mSize.height() / static_cast<qreal>(mClip.size.height)));
    const QPointF from = mProbe.value_or(QRectF(viewport()->rect()).center());
    const QPointF to = from + QPointF(way.x() * step.x(), way.y() * step.y()) / ratio;
    if (!PixelAt(to)) return;
    mProbe = to;
    Q_EMIT Hovered(to);
}

void PictureArea::keyPressEvent(QKeyEvent* event) {
    const std::pair<int, QPoint> ways[] = {
        {Qt::Key_Left, {-1, 0}}, {Qt::Key_Right, {1, 0}}, {Qt::Key_Up, {0, -1}}, {Qt::Key_Down, {0, 1}}};
    const auto* const way = std::ranges::find(ways, event->key(), &std::pair<int, QPoint>::first);
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (way != std::end(ways) && modifiers == Qt::ShiftModifier) return Pan(way->second);
    if (way != std::end(ways) && modifiers == Qt::ControlModifier) return MoveProbe(way->second);
    event->ignore();
}

} // namespace corvane::desktop
