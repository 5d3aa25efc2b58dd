#pragma once

#include <vector>

#include <QWidget>

#include "Compare/Finding.h"
#include "CompareJob.h"

namespace corvane::desktop {

/// The pictures of a video from left to right: green where one shows a frame of the clip, gray where it shows
/// none, and above it a mark for each finding that is about some frames only. A press, and the arrow keys,
/// go to a picture. UI thread.
class ComparisonTimeline final : public QWidget {
    Q_OBJECT

  public:
    explicit ComparisonTimeline(QWidget* parent);

    /// Shows these pictures and findings, and no place.
    void Show(std::vector<PlacedPicture> pictures, const std::vector<Finding>& findings);
    /// Sets the finding whose marks stand out; -1 for none.
    void SetFinding(int finding);
    void SetPicture(std::int64_t number);
    std::int64_t Picture() const { return mPicture; }
    std::int64_t Count() const { return static_cast<std::int64_t>(mPictures.size()); }
    const PlacedPicture& At(std::int64_t number) const { return mPictures[static_cast<std::size_t>(number)]; }
    /// The first picture that shows a frame from `frame` on; the last one if none does.
    std::int64_t PictureOf(std::int64_t frame) const;

    QSize sizeHint() const override;

  Q_SIGNALS:
    /// A person goes to a picture.
    void PictureWanted(qint64 number);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    struct Mark {
        int finding;
        std::int64_t first, last; // pictures
    };

    int Left(std::int64_t number) const;
    void PaintPictures(QPainter& painter) const;
    void PaintMarks(QPainter& painter) const;
    void Go(std::int64_t number);

    std::vector<PlacedPicture> mPictures;
    std::vector<std::int64_t> mHighest; // frame that any picture up to each one shows
    std::vector<Mark> mMarks;
    int mFinding = -1;
    std::int64_t mPicture = 0;
};

} // namespace corvane::desktop
