#include "ComparisonTimeline.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace corvane::desktop {

namespace {

constexpr int kMarks = 12; // height of the marks, in pixels
constexpr int kHeight = 40;
constexpr std::int64_t kPage = 10;
const QColor kMatched(0x2E, 0x9E, 0x5B), kOther(0x80, 0x80, 0x80), kMark(0xD9, 0x5F, 0x02),
    kChosen(0xE4, 0x1A, 0x1C);

} // namespace

ComparisonTimeline::ComparisonTimeline(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Pictures of the video"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ComparisonTimeline::sizeHint() const {
    return {600, kHeight};
}

void ComparisonTimeline::Show(std::vector<PlacedPicture> pictures, const std::vector<Finding>& findings) {
    mPictures = std::move(pictures);
    mHighest.clear();
    for (const PlacedPicture& picture : mPictures)
        mHighest.push_back(std::max(picture.frame, mHighest.empty() ? -1 : mHighest.back()));
    mMarks.clear();
    mFinding = -1;
    mPicture = 0;
    for (std::size_t i = 0; i < findings.size() && !mPictures.empty(); ++i)
        for (const FrameRange& range : findings[i].frames) {
            const bool ofVideo = CountsPictures(findings[i]);
            const std::int64_t first = ofVideo ? range.first : PictureOf(range.first);
            const std::int64_t last = ofVideo ? range.last : PictureOf(range.last);
            mMarks.push_back({static_cast<int>(i), std::clamp<std::int64_t>(first, 0, Count() - 1),
                              std::clamp<std::int64_t>(last, first, std::max(first, Count() - 1))});
        }
    update();
}

void ComparisonTimeline::SetFinding(int finding) {
    mFinding = finding;
    update();
}

void ComparisonTimeline::SetPicture(std::int64_t number) {
    mPicture = number;
    update();
}

std::int64_t ComparisonTimeline::PictureOf(std::int64_t frame) const {
    const auto found = std::ranges::lower_bound(mHighest, frame);
    return std::min(found - mHighest.begin(), std::max<std::ptrdiff_t>(std::ssize(mHighest) - 1, 0));
}

int ComparisonTimeline::Left(std::int64_t number) const {
    return static_cast<int>(number * width() / std::max<std::int64_t>(Count(), 1));
}

void ComparisonTimeline::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    if (mPictures.empty()) return;
    PaintPictures(painter);
    PaintMarks(painter);
    const int left = Left(mPicture);
    const int right = std::max(Left(mPicture + 1), left + 2);
    painter.setPen(hasFocus() ? palette().color(QPalette::Highlight) : palette().color(QPalette::Text));
    painter.drawRect(left, kMarks, right - left - 1, height() - kMarks - 1);
}

// One rectangle a run of pictures: a long video has more of them than the widget has columns.
void ComparisonTimeline::PaintPictures(QPainter& painter) const {
    for (std::int64_t first = 0; first < Count();) {
        const bool matched = At(first).frame >= 0;
        std::int64_t end = first + 1;
        while (end < Count() && (At(end).frame >= 0) == matched) ++end;
        painter.fillRect(QRect(Left(first), kMarks, std::max(Left(end) - Left(first), 1), height() - kMarks),
                         matched ? kMatched : kOther);
        first = end;
    }
}

void ComparisonTimeline::PaintMarks(QPainter& painter) const {
    for (const bool chosen : {false, true})
        for (const Mark& mark : mMarks) {
            if ((mark.finding == mFinding) != chosen) continue;
            const int left = Left(mark.first);
            painter.fillRect(QRect(left, 0, std::max(Left(mark.last + 1) - left, 3), kMarks - 2),
                             chosen ? kChosen : kMark);
        }
}

void ComparisonTimeline::Go(std::int64_t number) {
    if (mPictures.empty()) return;
    SetPicture(std::clamp<std::int64_t>(number, 0, Count() - 1));
    Q_EMIT PictureWanted(mPicture);
}

void ComparisonTimeline::mousePressEvent(QMouseEvent* event) {
    mouseMoveEvent(event);
}

void ComparisonTimeline::mouseMoveEvent(QMouseEvent* event) {
    Go(static_cast<std::int64_t>(event->position().x()) * Count() / std::max(width(), 1));
}

void ComparisonTimeline::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Left: return Go(mPicture - 1);
    case Qt::Key_Right: return Go(mPicture + 1);
    case Qt::Key_PageUp: return Go(mPicture - kPage);
    case Qt::Key_PageDown: return Go(mPicture + kPage);
    case Qt::Key_Home: return Go(0);
    case Qt::Key_End: return Go(Count() - 1);
    default: QWidget::keyPressEvent(event);
    }
}

} // namespace corvane::desktop
