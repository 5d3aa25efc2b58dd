#pragma once

#include <QFrame>

#include "Export/ExportQueue.h"

class QLabel;
class QProgressBar;
class QToolButton;

namespace corvane::desktop {

class ElidedLabel;

/// One job of the export panel. UI thread only.
class ExportRow final : public QFrame {
    Q_OBJECT
  public:
    ExportRow(const ExportJob& job, QWidget* parent);

    /// Shows how far along the job is.
    void Show(const ExportStatus& status);
    /// The name of the clip.
    const QString& Name() const { return mName; }
    /// The state that is shown.
    ExportState State() const { return mState; }
    bool IsFinished() const { return corvane::IsFinished(mState); }

  Q_SIGNALS:
    /// The person wants the job to end.
    void CancelPressed();
    /// The person wants the row to go.
    void RemovePressed();

  private:
    void MakeWidgets();
    QToolButton* AddButton(const QString& objectName, const QString& text, const QString& tip);
    void ShowButtons();
    void ShowInFolder();
    void CopyFailure();

    QString StateText(const ExportStatus& status) const;

    const QString mName;
    const QString mOutput;
    const QString mFolder;
    ExportState mState = ExportState::kWaiting;
    QString mFailure;
    ElidedLabel* mStateLabel = nullptr;
    QProgressBar* mBar = nullptr;
    QToolButton* mCancel = nullptr;
    QToolButton* mCopy = nullptr;
    QToolButton* mShow = nullptr;
    QToolButton* mRemove = nullptr;
};

} // namespace corvane::desktop
