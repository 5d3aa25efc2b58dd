#pragma once

#include <cstdint>

#include <QWidget>

#include "ViewerActions.h"

class QLabel;
class QLineEdit;

namespace corvane::desktop {

class FrameSlider;

/// The scrubber, the buttons, and where the playhead is: as a frame number that can be edited, as a timecode
/// and as a time. UI thread.
class TransportBar final : public QWidget {
    Q_OBJECT

  public:
    /// The actions outlive the bar.
    TransportBar(const ViewerActions& actions, QWidget* parent);

    /// Offers `frames` frames; if there are none, nothing can be done.
    void SetClip(std::int64_t frames, std::int64_t ticksPerFrame);
    /// Shows where the playhead is. Raises no signal.
    void SetFrame(std::int64_t frame);

    /// Says at the field why what was typed there is no frame. It stays, to be corrected.
    void ShowProblem(const QString& sentence);

  Q_SIGNALS:
    /// A person asks for a frame by the scrubber. It is always inside the clip.
    void FrameWanted(qint64 frame);
    /// A person asks for a frame by what was typed into the field, which is not empty.
    void PlaceWanted(const QString& text);
    /// A person has finished editing the number, or given it up.
    void FieldLeft();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void NameParts();
    void BuildLayout(const ViewerActions& actions);
    void ReadField();
    void ShowFrame();
    void ShowTimes();

    FrameSlider* mSlider;
    QLineEdit* mField;
    QLabel* mLast;
    QLabel* mTimecode;
    QLabel* mTime;
    std::int64_t mFrames = 0;
    std::int64_t mTicksPerFrame = 0;
    std::int64_t mFrame = 0;
};

} // namespace corvane::desktop
