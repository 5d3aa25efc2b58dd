#include "FrameSlider.h"

#include <algorithm>

#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>

namespace corvane::desktop {

namespace {

/// If a clip has more frames than this, one step of the slider is more than one frame.
constexpr std::int64_t kMaxValue = 1 << 30;
constexpr int kPages = 20;

} // namespace

FrameSlider::FrameSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    connect(this, &QSlider::valueChanged, this, [this](int value) { Q_EMIT FrameWanted(FrameOf(value)); });
}

void FrameSlider::SetFrames(std::int64_t frames) {
    const QSignalBlocker silent(this);
    mLast = std::max<std::int64_t>(frames - 1, 0);
    setRange(0, static_cast<int>(std::min(mLast, kMaxValue)));
    setPageStep(std::max(maximum() / kPages, 1));
}

void FrameSlider::SetFrame(std::int64_t frame) {
    const QSignalBlocker silent(this);
    if (mLast <= kMaxValue) return setValue(static_cast<int>(frame));
    setValue(static_cast<int>(static_cast<__int128>(frame) * kMaxValue / mLast));
}

std::int64_t FrameSlider::FrameOf(int value) const {
    if (mLast <= kMaxValue) return value;
    return static_cast<std::int64_t>(static_cast<__int128>(mLast) * value / kMaxValue);
}

int FrameSlider::ValueAt(int x) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect groove = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    return QStyle::sliderValueFromPosition(minimum(), maximum(), x - groove.left() - handle.width() / 2,
                                           groove.width() - handle.width(), option.upsideDown);
}

void FrameSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    setSliderDown(true);
    setSliderPosition(ValueAt(event->position().toPoint().x()));
    event->accept();
}

void FrameSlider::mouseMoveEvent(QMouseEvent* event) {
    if (!isSliderDown()) return event->ignore();
    setSliderPosition(ValueAt(event->position().toPoint().x()));
    event->accept();
}

void FrameSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    setSliderDown(false);
    event->accept();
}

} // namespace corvane::desktop
