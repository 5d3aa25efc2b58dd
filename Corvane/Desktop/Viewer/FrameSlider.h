#pragma once

#include <cstdint>

#include <QSlider>

namespace corvane::desktop {

/// A slider over the frames of a clip, however many there are. A press jumps to the frame under the pointer.
/// UI thread.
class FrameSlider final : public QSlider {
    Q_OBJECT

  public:
    explicit FrameSlider(QWidget* parent);

    /// Offers frames 0 to `frames` - 1. Raises no signal.
    void SetFrames(std::int64_t frames);
    /// Moves to a frame. Raises no signal.
    void SetFrame(std::int64_t frame);

  Q_SIGNALS:
    /// A person asks for a frame.
    void FrameWanted(qint64 frame);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    std::int64_t FrameOf(int value) const;
    int ValueAt(int x) const;

    std::int64_t mLast = 0;
};

} // namespace corvane::desktop
