#pragma once

#include <map>
#include <memory>

#include <QWidget>

#include "Desktop/Toolkit/UICalls.h"
#include "Export/ExportQueue.h"

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace corvane::desktop {

class ExportRow;

/// The exports of a window, one row a job: those that wait or run, and what became of the others. Destroying
/// it cancels what is unfinished. UI thread only.
class ExportPanel final : public QWidget {
    Q_OBJECT
  public:
    /// `bundle` makes the clips.
    explicit ExportPanel(std::shared_ptr<Bundle> bundle, QWidget* parent = nullptr);
    ~ExportPanel() override;

    /// Adds a row and puts the job behind the others. If the job fails, its row says why.
    void AddJob(const ExportJob& job);
    /// Whether a job waits or runs.
    bool HasUnfinishedJobs() const;
    /// Whether an unfinished job is to make this file.
    bool IsTaken(const std::filesystem::path& output) const;
    /// Cancels every job; the one that runs ends soon after.
    void CancelAll();
    /// Removes the rows of jobs that are done, cancelled or failed.
    void ClearFinished();

  Q_SIGNALS:
    /// A job is done, was cancelled or failed. `name` is the clip's.
    void JobFinished(const QString& name, corvane::ExportState state);
    /// How many jobs are waiting or running now.
    void UnfinishedJobsChanged(int count);

  private:
    void MakeWidgets();
    void ShowStatus(ExportQueue::ID id, const ExportStatus& status);
    void Remove(ExportQueue::ID id);
    void ShowCounts();

    std::map<ExportQueue::ID, ExportRow*> mRows;
    QLabel* mSummary = nullptr;
    QLabel* mEmpty = nullptr;
    QPushButton* mCancelAll = nullptr;
    QPushButton* mClear = nullptr;
    QVBoxLayout* mList = nullptr;
    int mUnfinished = 0;
    UICalls mUI;
    std::unique_ptr<ExportQueue> mQueue; // last: no other thread calls once it is gone
};

} // namespace corvane::desktop
