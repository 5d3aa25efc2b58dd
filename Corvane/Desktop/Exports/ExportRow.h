#pragma once

#include <QFrame>

#include "Export/ExportQueue.h"

class QLabel;
class QProgressBar;
class QToolButton;

namespace corvane::desktop {

class ElidedLabel;

/// One job of the export panel.
class ExportRow final : public QFrame {
    Q_OBJECT
  public:
    ExportRow(const ExportJob& job, QWidget* parent);

    void Show(const ExportStatus& status);
    const QString& Name() const { return mName; }
    ExportState State() const { return mState; }
    bool IsFinished() const { return mState != ExportState::kWaiting && mState != ExportState::kRunning; }

  Q_SIGNALS:
    void CancelPressed();
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
