#pragma once

#include <QComboBox>
#include <QDialog>
#include <QSpinBox>

#include "Engine/ClipFormat.h"

namespace corvane::desktop {

/// Asks what new clips begin with: frame size, pixel aspect and rate, either one by one or from a preset. UI
/// thread.
class SequenceDialog final : public QDialog {
    Q_OBJECT

  public:
    /// Shows `sequence` at first.
    SequenceDialog(const ClipFormat& sequence, QWidget* parent);

    /// The format that is set now.
    ClipFormat GetSequence() const;

  private:
    void Show(const ClipFormat& sequence);
    void ShowPreset();

    QComboBox* mPreset;
    QSpinBox* mWidth;
    QSpinBox* mHeight;
    QComboBox* mAspect;
    QComboBox* mRate;
};

} // namespace corvane::desktop
