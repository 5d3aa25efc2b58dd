#include "ExportRow.h"

#include <cmath>

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QToolButton>
#include <QUrl>

#include "Desktop/Toolkit/ElidedLabel.h"
#include "Engine/ClipText.h"
#include "Export/ExportText.h"

namespace corvane::desktop {

namespace {

constexpr int kBarSteps = 1000;

QString FrameCount(std::int64_t frames) {
    return QString::fromStdString(FramesText(frames));
}

QString RunningText(const ExportStatus& status) {
    if (status.framesDone == 0) return ExportRow::tr("Starting…");
    QString text =
        ExportRow::tr("%1 of %2").arg(QString::number(status.framesDone), FrameCount(status.framesTotal));
    const double rate = status.FramesPerSecond();
    if (rate > 0) text += ExportRow::tr(", %1 a second").arg(QString::number(rate, 'f', rate < 10 ? 1 : 0));
    if (const auto left = status.SecondsLeft())
        text += ExportRow::tr(", %1 left").arg(QString::fromStdString(WaitText(*left)));
    return text;
}

QString DoneText(const ExportStatus& status) {
    const ExportReport& report = status.report;
    const QString text = ExportRow::tr("Done: %1, %2 in %3")
                             .arg(FrameCount(report.frames), QString::fromStdString(BytesText(report.bytes)),
                                  QString::fromStdString(WaitText(status.seconds)));
    return report.lost.empty() ? text : text + QStringLiteral("; ") + QString::fromStdString(report.lost);
}

} // namespace

ExportRow::ExportRow(const ExportJob& job, QWidget* parent)
    : QFrame(parent), mName(QString::fromStdString(job.name)),
      mOutput(QFile::decodeName(job.options.output.c_str())),
      mFolder(QFile::decodeName(std::filesystem::absolute(job.options.output).parent_path().c_str())) {
    setFrameShape(QFrame::StyledPanel);
    MakeWidgets();
    Show({});
}

void ExportRow::MakeWidgets() {
    auto* const name = new ElidedLabel(this);
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    name->SetLine(mName, Qt::ElideRight);
    auto* const destination = new ElidedLabel(this);
    destination->SetLine(mOutput, Qt::ElideMiddle);
    destination->setAccessibleName(tr("Destination of %1").arg(mName));
    mBar = new QProgressBar(this);
    mBar->setRange(0, kBarSteps);
    mBar->setTextVisible(false);
    mBar->setObjectName("exportProgress");
    mBar->setAccessibleName(tr("Progress of %1").arg(mName));
    mStateLabel = new ElidedLabel(this);
    mStateLabel->setObjectName("exportState");
    mStateLabel->setAccessibleName(tr("State of %1").arg(mName));
    mCancel = AddButton("exportCancel", tr("Cancel"), tr("End this export; no file of it is left"));
    mCopy = AddButton("exportCopy", tr("Copy Message"), tr("Copy the whole message to the clipboard"));
    mShow = AddButton("exportShow", tr("Show in Folder"), tr("Open the folder that the export is in"));
    mRemove = AddButton("exportRemove", tr("Remove"), tr("Remove this line from the list; files stay"));
    connect(mCancel, &QToolButton::clicked, this, &ExportRow::CancelPressed);
    connect(mCopy, &QToolButton::clicked, this, &ExportRow::CopyFailure);
    connect(mShow, &QToolButton::clicked, this, &ExportRow::ShowInFolder);
    connect(mRemove, &QToolButton::clicked, this, &ExportRow::RemovePressed);
    auto* const buttons = new QHBoxLayout;
    for (QToolButton* const button : {mCancel, mCopy, mShow, mRemove}) buttons->addWidget(button);
    auto* const grid = new QGridLayout(this);
    grid->addWidget(name, 0, 0);
    grid->addWidget(destination, 1, 0);
    grid->addWidget(mBar, 2, 0);
    grid->addWidget(mStateLabel, 3, 0);
    grid->addLayout(buttons, 0, 1, 4, 1, Qt::AlignVCenter);
    grid->setColumnStretch(0, 1);
    grid->setVerticalSpacing(2);
}

QToolButton* ExportRow::AddButton(const QString& objectName, const QString& text, const QString& tip) {
    auto* const button = new QToolButton(this);
    button->setObjectName(objectName);
    button->setText(text);
    button->setToolTip(tip);
    button->setAccessibleName(tr("%1: %2").arg(text, mName));
    button->setFocusPolicy(Qt::StrongFocus); // tool buttons are no stop of the Tab key otherwise
    return button;
}

void ExportRow::Show(const ExportStatus& status) {
    mState = status.state;
    mFailure = QString::fromStdString(status.failure);
    const double share = status.framesTotal > 0 ? static_cast<double>(status.framesDone) /
                                                      static_cast<double>(status.framesTotal)
                                                : 0;
    mBar->setValue(mState == ExportState::kDone ? kBarSteps
                                                : static_cast<int>(std::lround(share * kBarSteps)));
    mStateLabel->SetLine(StateText(status), Qt::ElideRight);
    ShowButtons();
}

QString ExportRow::StateText(const ExportStatus& status) const {
    switch (status.state) {
    case ExportState::kWaiting: return tr("Waiting");
    case ExportState::kRunning: return RunningText(status);
    case ExportState::kDone: return DoneText(status);
    case ExportState::kCancelled: return tr("Cancelled; nothing is left behind");
    case ExportState::kFailed: break;
    }
    // The line above names the output already.
    const QString named = mOutput + QStringLiteral(": ");
    return tr("Failed: %1").arg(mFailure.startsWith(named) ? mFailure.mid(named.size()) : mFailure);
}

void ExportRow::ShowButtons() {
    const bool hadFocus = mCancel->hasFocus();
    mCopy->setAccessibleDescription(mFailure);
    mBar->setVisible(!IsFinished());
    mCancel->setVisible(!IsFinished());
    mCopy->setVisible(mState == ExportState::kFailed);
    mShow->setVisible(mState == ExportState::kDone);
    mRemove->setVisible(IsFinished());
    if (hadFocus && IsFinished()) mRemove->setFocus();
}

void ExportRow::ShowInFolder() {
    if (QFileInfo(mFolder).isDir() && QDesktopServices::openUrl(QUrl::fromLocalFile(mFolder))) return;
    mStateLabel->SetLine(tr("The folder can't be opened from here; the export is in %1")
                             .arg(QDir::toNativeSeparators(mFolder)),
                         Qt::ElideMiddle);
}

void ExportRow::CopyFailure() {
    QGuiApplication::clipboard()->setText(mFailure);
}

} // namespace corvane::desktop
