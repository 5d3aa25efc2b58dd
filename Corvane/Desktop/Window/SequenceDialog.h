#pragma once

#include <QComboBox>
#include <QDialog>
#include <QSpinBox>

#include "Engine/ClipFormat.h"

namespace corvane::desktop {

/// Asks what new clips begin with: frame size, pixel aspect and rate, each of its own or from a preset.
class SequenceDialog final : public QDialog {
    Q_OBJECT

  public:
    SequenceDialog(const ClipFormat& sequence, QWidget* parent);

    /// What is set now.
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
