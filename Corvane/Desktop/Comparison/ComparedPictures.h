#pragma once

#include <QImage>
#include <QWidget>

#include "Engine/ClipFormat.h"
#include "PairLoader.h"

namespace corvane::desktop {

/// How two pictures are shown together.
enum class CompareView : std::uint8_t {
    kSideBySide, ///< expected on the left, found on the right
    kWipe,       ///< expected left of a line that a person moves, found right of it
    kDifference  ///< what differs, several times as bright
};

/// Two pictures, expected and found, fitted into the widget in the clip's shape. In a wipe, the pointer and
/// the arrow keys move the line. UI thread.
class ComparedPictures final : public QWidget {
    Q_OBJECT

  public:
    ComparedPictures(const ClipFormat& clip, QWidget* parent);

    void SetPair(std::shared_ptr<const PicturePair> pair);
    void SetView(CompareView view);
    CompareView GetView() const { return mView; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QRect Place(const QRect& room) const;
    void PaintSideBySide(QPainter& painter) const;
    void PaintWipe(QPainter& painter) const;
    void PaintOne(QPainter& painter, const QImage& image, const QRect& room, const QString& label) const;
    void MoveLine(double share);

    const ClipFormat mClip;
    std::shared_ptr<const PicturePair> mPair;
    QImage mExpected, mFound; // of the pair, not owned
    ReportImage mDifference;  // made when it is first shown
    CompareView mView = CompareView::kSideBySide;
    double mLine = 0.5; // of the picture's width
};

} // namespace corvane::desktop
