#pragma once

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include <QDialog>

#include "Export/ExportChoices.h"

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace corvane::desktop {

/// What the dialog has to know besides the clip.
struct ExportPlace {
    /// The folder to propose: that of the clip's file or of the project. Empty: the one of the last export,
    /// or the person's own.
    QString folder;
    /// The frame at the playhead: what a single picture shows.
    std::int64_t frame = 0;
    /// Whether another export is going to make this file; may be empty.
    std::function<bool(const std::filesystem::path&)> isTaken;
};

/// Asks how, what part of and where to a clip is to be exported. What was chosen is proposed the next time.
class ExportDialog final : public QDialog {
    Q_OBJECT
  public:
    /// `name` is what the person calls the clip. The clip is looked at here only.
    ExportDialog(const Clip& clip, const QString& name, const ExportPlace& place, QWidget* parent);

    /// What the person chose, once the dialog was accepted.
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
    void MakeDestinationRows(QFormLayout& form);
    void Restore();
    void Remember() const;
    void ChooseKind(int index);
    void ShowFrames();
    void FitHeight();
    void Browse();
    void Complain(const QString& sentence, QWidget* where);
    const Kind& Chosen() const;
    QString UnfitText() const;
    std::pair<std::int64_t, std::int64_t> Frames() const;
    std::optional<std::filesystem::path> Destination();
    bool CheckDestination(const std::filesystem::path& path);
    bool ConfirmsReplacement(const std::filesystem::path& path);

    const QString mName;
    const ExportPlace mPlace;
    const std::int64_t mFrameCount;
    std::vector<Kind> mKinds;
    ExportOptions mOptions;
    int mKind = -1;

    QFormLayout* mForm = nullptr;
    QComboBox* mKindBox = nullptr;
    QLabel* mAbout = nullptr;
    QSpinBox* mQuality = nullptr;
    QComboBox* mPreset = nullptr;
    QCheckBox* mWhole = nullptr;
    QSpinBox* mFirst = nullptr;
    QSpinBox* mLast = nullptr;
    QLabel* mCount = nullptr;
    QLineEdit* mPath = nullptr;
    QLabel* mComplaint = nullptr;
    QDialogButtonBox* mButtons = nullptr;
};

} // namespace corvane::desktop
