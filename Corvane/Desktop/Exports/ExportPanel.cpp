#include "ExportPanel.h"

#include <utility>

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "ExportRow.h"

namespace corvane::desktop {

ExportPanel::ExportPanel(std::shared_ptr<Bundle> bundle, QWidget* parent) : QWidget(parent) {
    MakeWidgets();
    mQueue = std::make_unique<ExportQueue>(std::move(bundle),
                                           [this](ExportQueue::ID id, const ExportStatus& status) {
                                               mUI.Post([this, id, status] { ShowStatus(id, status); });
                                           });
    ShowCounts();
}

ExportPanel::~ExportPanel() {
    mQueue.reset();
}

void ExportPanel::MakeWidgets() {
    mSummary = new QLabel(this);
    mSummary->setObjectName("exportSummary");
    mCancelAll = new QPushButton(tr("Cancel &All"), this);
    mCancelAll->setObjectName("exportCancelAll");
    mCancelAll->setToolTip(tr("End all exports; no file of them is left"));
    mClear = new QPushButton(tr("C&lear Finished"), this);
    mClear->setObjectName("exportClear");
    mClear->setToolTip(tr("Remove the exports that are done, cancelled or failed from the list; files stay"));
    connect(mCancelAll, &QPushButton::clicked, this, &ExportPanel::CancelAll);
    connect(mClear, &QPushButton::clicked, this, &ExportPanel::ClearFinished);
    auto* const bar = new QHBoxLayout;
    bar->addWidget(mSummary, 1);
    bar->addWidget(mCancelAll);
    bar->addWidget(mClear);

    auto* const content = new QWidget(this);
    mList = new QVBoxLayout(content);
    mList->setContentsMargins(0, 0, 0, 0);
    mEmpty = new QLabel(tr("No exports. Choose Export… for a clip to make a file of it."), content);
    mEmpty->setWordWrap(true);
    mEmpty->setAlignment(Qt::AlignCenter);
    mList->addWidget(mEmpty);
    mList->addStretch(1);
    auto* const scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(content);
    scroll->setAccessibleName(tr("Exports"));
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(scroll, 1);
}

void ExportPanel::AddJob(const ExportJob& job) {
    auto* const row = new ExportRow(job, this);
    mList->insertWidget(mList->count() - 1, row);
    const ExportQueue::ID id = mQueue->Add(job);
    mRows.emplace(id, row);
    connect(row, &ExportRow::CancelPressed, this, [this, id] { mQueue->Cancel(id); });
    connect(row, &ExportRow::RemovePressed, this, [this, id] { Remove(id); });
    ShowCounts();
}

bool ExportPanel::HasUnfinishedJobs() const {
    return mQueue->CountUnfinished() != 0;
}

bool ExportPanel::IsTaken(const std::filesystem::path& output) const {
    return mQueue->IsTaken(output);
}

void ExportPanel::CancelAll() {
    mQueue->CancelAll();
}

void ExportPanel::ClearFinished() {
    std::vector<ExportQueue::ID> finished;
    for (const auto& [id, row] : mRows)
        if (row->IsFinished()) finished.push_back(id);
    for (const ExportQueue::ID id : finished) Remove(id);
}

void ExportPanel::ShowStatus(ExportQueue::ID id, const ExportStatus& status) {
    const auto found = mRows.find(id);
    if (found == mRows.end()) return;
    ExportRow& row = *found->second;
    const bool changed = row.State() != status.state;
    row.Show(status);
    if (!changed) return;
    ShowCounts();
    if (status.IsFinished()) Q_EMIT JobFinished(row.Name(), status.state);
}

void ExportPanel::Remove(ExportQueue::ID id) {
    const auto found = mRows.find(id);
    if (found == mRows.end()) return;
    mQueue->Forget(id);
    // The press that removes a row comes from one of its buttons.
    found->second->hide();
    found->second->deleteLater();
    mRows.erase(found);
    ShowCounts();
}

void ExportPanel::ShowCounts() {
    int waiting = 0, running = 0;
    for (const auto& [id, row] : mRows) {
        waiting += row->State() == ExportState::kWaiting;
        running += row->State() == ExportState::kRunning;
    }
    const int unfinished = waiting + running;
    mSummary->setText(
        unfinished == 0
            ? QString()
            : tr("%1 running, %2 waiting").arg(QString::number(running), QString::number(waiting)));
    mEmpty->setVisible(mRows.empty());
    mCancelAll->setEnabled(unfinished != 0);
    mClear->setEnabled(static_cast<std::size_t>(unfinished) < mRows.size());
    if (std::exchange(mUnfinished, unfinished) != unfinished) Q_EMIT UnfinishedJobsChanged(unfinished);
}

} // namespace corvane::desktop
