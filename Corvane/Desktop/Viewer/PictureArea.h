#pragma once

#include <optional>

#include <QAbstractScrollArea>

#include "PictureLoader.h"

namespace corvane::desktop {

/// Where the picture is seen: fitted, or at full size, with scroll bars if it is larger than the room.
///
/// It says what picture it wants (`GetLook`) and paints the last one that it was given, moved or stretched to
/// its place, until there is a better one. Painting only copies pixels. Shift and the arrow keys, the wheel
/// and dragging move a picture that is larger than the area. Control and the arrow keys stand in for the
/// pointer. UI thread.
class PictureArea final : public QAbstractScrollArea {
    Q_OBJECT

  public:
    explicit PictureArea(QWidget* parent);

    /// Shows pictures of such a clip. The picture that is shown stays until the next one.
    void SetClip(const ClipFormat& clip);
    /// Fits the picture into the area, or shows it at full size.
    void SetFit(bool fit);
    /// Shows the lines of both fields or of one.
    void SetFields(FieldView fields);
    /// What picture fills the area now.
    PictureLook GetLook() const;

    /// Shows a picture, or the problem that it comes with. `tag` comes back with `Painted`.
    void ShowPicture(const PicturePointer& picture, std::int64_t tag);
    /// Shows a sentence and no picture.
    void ShowMessage(const QString& text);
    /// Keeps the picture and lets go of the frame behind it, which may be very large.
    void ReleaseFrame();
    /// The picture that is shown; null for none.
    const PicturePointer& GetPicture() const { return mPicture; }
    /// Whether the picture has been painted since it was given.
    bool IsPainted() const { return mPainted; }
    /// The sentence that is shown; empty for none.
    const QString& GetMessage() const { return mMessage; }
    /// The pixel of the frame that is shown at `place`, in device-independent pixels of the viewport; nothing
    /// outside of the picture.
    std::optional<QPoint> PixelAt(QPointF place) const;
    /// The picture's width and height in percent of the full size.
    double GetZoom() const;

  Q_SIGNALS:
    /// What `GetLook` says has changed.
    void LookChanged();
    /// A picture, or its problem, has been painted for the first time. It reaches the screen when the paint
    /// event is over, so this is to be connected queued.
    void Painted(const PicturePointer& picture, qint64 tag);
    /// The pointer moved over the viewport, to a `place` as `PixelAt` takes it.
    void Hovered(QPointF place);
    /// The pointer left the viewport.
    void HoverEnded();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QSize Room() const; // the viewport in device pixels
    /// The whole picture's place in the viewport, in device pixels; the corner is negative if it is scrolled.
    QRect Place() const;
    void LayOut();
    void PaintPicture(QPainter& painter);
    void Pan(QPoint way);
    void MoveProbe(QPoint way);

    ClipFormat mClip;
    bool mFit = true;
    FieldView mFields = FieldView::kBoth;
    QSize mSize; // of the whole picture, in device pixels
    PicturePointer mPicture;
    std::int64_t mTag = 0;
    bool mPainted = true;
    QString mMessage;
    std::optional<QPoint> mDragged; // where the pointer was last
    std::optional<QPointF> mProbe;  // the place of the last `Hovered`
};

} // namespace corvane::desktop
