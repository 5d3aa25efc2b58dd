#pragma once

#include <utility>
#include <vector>

#include <QDialog>

#include "DestinationEdit.h"

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QSpinBox;

namespace corvane::desktop {

/// Asks how a clip is to be exported, which part of it, and where to. What was chosen is proposed the next
/// time. UI thread only.
class ExportDialog final : public QDialog {
    Q_OBJECT
  public:
    /// `name` is what the person calls the clip. The clip is looked at here only; a choice that can't be made
    /// of it is shown with the reason.
    ExportDialog(const Clip& clip, const QString& name, const ExportPlace& place, QWidget* parent);

    /// What the person chose, once the dialog is accepted.
    const ExportOptions& Options() const { return mOptions; }

    /// Checks what was entered, and asks before files are replaced.
    void accept() override;

  private:
    struct Kind {
        const ExportChoice* choice;
        ExportOptions options;
        ExportPreview preview;
    };

    void FindKinds(const Clip& clip);
    void MakeWidgets();
    void MakeKindRows(QFormLayout& form);
    void MakeH264Rows(QFormLayout& form);
    void MakeFrameRows(QFormLayout& form);
    void Restore();
    void Remember() const;
    void ChooseKind(int index);
    void ShowFrames();
    void FitHeight();
    const Kind& Chosen() const;
    QString UnfitText() const;
    std::pair<std::int64_t, std::int64_t> Frames() const;

    const QString mName;
    const ExportPlace mPlace;
    const std::int64_t mFrameCount;
    std::vector<Kind> mKinds;
    ExportOptions mOptions;
    int mKind = 0;

    QFormLayout* mForm = nullptr;
    QComboBox* mKindBox = nullptr;
    QLabel* mAbout = nullptr;
    QSpinBox* mQuality = nullptr;
    QComboBox* mPreset = nullptr;
    QCheckBox* mWhole = nullptr;
    QSpinBox* mFirst = nullptr;
    QSpinBox* mLast = nullptr;
    QLabel* mCount = nullptr;
    DestinationEdit* mDestination = nullptr;
    QLabel* mComplaint = nullptr;
    QDialogButtonBox* mButtons = nullptr;
};

} // namespace corvane::desktop
