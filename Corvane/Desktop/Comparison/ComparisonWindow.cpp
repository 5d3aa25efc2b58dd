#include "ComparisonWindow.h"

#include <utility>

#include <QButtonGroup>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include "Compare/CompareText.h"
#include "Compare/ReportPage.h"
#include "Desktop/Toolkit/Text.h"
#include "Engine/Failure.h"
#include "Engine/TextFile.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::desktop {

namespace {

constexpr QSize kFirstSize(1060, 680);

QString Summary(const CompareReport& report) {
    const QString text = QString::fromStdString(MatchedText(report)) + u'.';
    const QString psnr = QString::fromStdString(PSNRText(report));
    if (psnr.isEmpty()) return text;
    return ComparisonWindow::tr("%1 PSNR: %2. Largest error: %3.")
        .arg(text, psnr, QString::fromStdString(LargestErrorText(report)));
}

} // namespace

ComparisonWindow::ComparisonWindow(std::shared_ptr<const Clip> clip, const QString& name,
                                   std::filesystem::path video, QWidget* parent)
    : QWidget(parent, Qt::Window), mClip(std::move(clip)), mVideo(std::move(video)), mPairs(mClip, mVideo),
      mJob(mClip, mVideo) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("%1 and %2 – Synthex").arg(name, QFileInfo(FromPath(mVideo)).fileName()));
    MakeWidgets(name);
    resize(kFirstSize);
    connect(&mJob, &CompareJob::Progressed, this, [this](qint64 done, qint64 total) {
        constexpr int kSteps = 1000;
        mProgress->setRange(0, total > 0 ? kSteps : 0);
        if (total > 0) mProgress->setValue(static_cast<int>(std::min(done, total) * kSteps / total));
        mSummary->setText(total > 0 ? tr("Comparing: picture %1 of %2").arg(done).arg(total)
                                    : tr("Comparing: picture %1").arg(done));
    });
    connect(&mJob, &CompareJob::Finished, this, &ComparisonWindow::ShowReport);
    connect(&mJob, &CompareJob::Failed, this, [this](const QString& why) {
        EndProgress(why);
        Q_EMIT Done();
    });
    connect(&mPairs, &PairLoader::Made, this, &ComparisonWindow::ShowPair);
    mJob.Start();
}

ComparisonWindow::~ComparisonWindow() = default;

void ComparisonWindow::MakeWidgets(const QString& name) {
    QLayout* const top = MakeSummary(name);
    mFindings = new QListWidget(this);
    mFindings->setObjectName("compareFindings");
    mFindings->setAccessibleName(tr("Findings, the worst first"));
    mFindings->setWordWrap(true);
    mFindings->setAlternatingRowColors(true);
    mFindings->setResizeMode(QListView::Adjust); // the lines break elsewhere
    mFindings->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(mFindings, &QListWidget::currentRowChanged, this, &ComparisonWindow::GoToFinding);

    auto* const splitter = new QSplitter(this);
    splitter->addWidget(mFindings);
    splitter->addWidget(MakePictures());
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({kFirstSize.width() / 3, kFirstSize.width() * 2 / 3});
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(splitter, 1);
}

QLayout* ComparisonWindow::MakeSummary(const QString& name) {
    auto* const top = new QHBoxLayout;
    mSummary = new QLabel(tr("Comparing %1 with %2").arg(name, FromPath(mVideo)), this);
    mSummary->setObjectName("compareSummary");
    mSummary->setWordWrap(true);
    mSummary->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    mProgress = new QProgressBar(this);
    mProgress->setRange(0, 0);
    mProgress->setTextVisible(false);
    mProgress->setMaximumWidth(kFirstSize.width() / 5);
    mProgress->setAccessibleName(tr("Progress of the comparison"));
    mStop = new QPushButton(tr("&Stop"), this);
    mStop->setObjectName("compareStop");
    mStop->setToolTip(tr("End the comparison and show what was found so far"));
    connect(mStop, &QPushButton::clicked, &mJob, &CompareJob::Cancel);
    mSave = new QPushButton(tr("Save &Report…"), this);
    mSave->setObjectName("compareSave");
    mSave->setToolTip(tr("Write what was found to a page for a browser, with pictures"));
    mSave->setEnabled(false);
    connect(mSave, &QPushButton::clicked, this, &ComparisonWindow::SaveReport);
    top->addWidget(mSummary, 1);
    top->addWidget(mProgress);
    top->addWidget(mStop);
    top->addWidget(mSave);
    return top;
}

QWidget* ComparisonWindow::MakePictures() {
    mPictures = new ComparedPictures(mClip->Info().format, this);
    mPlace = new QLabel(this);
    mPlace->setObjectName("comparePlace");
    mTimeline = new ComparisonTimeline(this);
    connect(mTimeline, &ComparisonTimeline::PictureWanted, this, &ComparisonWindow::GoToPicture);
    auto* const right = new QWidget(this);
    auto* const column = new QVBoxLayout(right);
    column->setContentsMargins(0, 0, 0, 0);
    auto* const bar = new QHBoxLayout;
    bar->addWidget(MakeViewButtons());
    bar->addStretch(1);
    bar->addWidget(mPlace);
    column->addLayout(bar);
    column->addWidget(mPictures, 1);
    column->addWidget(mTimeline);
    return right;
}

QWidget* ComparisonWindow::MakeViewButtons() {
    auto* const bar = new QWidget(this);
    auto* const row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    auto* const group = new QButtonGroup(bar);
    struct View {
        CompareView view;
        QString text, tip;
    };
    const View views[] = {
        {CompareView::kSideBySide, tr("S&ide by Side"), tr("Show the expected and the found picture")},
        {CompareView::kWipe, tr("&Wipe"), tr("Show one beside the other; drag the line between them")},
        {CompareView::kDifference, tr("&Difference"), tr("Show what differs, several times as bright")}};
    for (const auto& [view, text, tip] : views) {
        auto* const button = new QToolButton(bar);
        button->setText(text);
        button->setToolTip(tip);
        button->setCheckable(true);
        button->setChecked(view == CompareView::kSideBySide);
        button->setFocusPolicy(Qt::StrongFocus);
        group->addButton(button);
        row->addWidget(button);
        connect(button, &QToolButton::toggled, this, [this, chosen = view](bool on) {
            if (on) mPictures->SetView(chosen);
        });
    }
    return bar;
}

void ComparisonWindow::EndProgress(const QString& summary) {
    mProgress->hide();
    mStop->hide();
    mSummary->setText(summary);
}

void ComparisonWindow::ShowReport(const std::shared_ptr<const CompareReport>& report) {
    mReport = report;
    EndProgress(Summary(*report));
    mSave->setEnabled(true);
    mTimeline->Show(mJob.Pictures(), report->findings);
    ShowFindings();
    if (!report->findings.empty())
        mFindings->setCurrentRow(0);
    else
        GoToPicture(0);
    Q_EMIT Done();
}

void ComparisonWindow::ShowFindings() {
    for (const Finding& finding : mReport->findings) {
        auto* const item = new QListWidgetItem(QString::fromStdString(finding.sentence) + u'\n' +
                                                   QString::fromStdString(finding.kind),
                                               mFindings);
        item->setToolTip(QString::fromStdString(finding.sentence));
    }
    if (mReport->findings.empty()) AddRemark(kNothingFoundText);
    for (const std::string& remark : mReport->remarks) AddRemark(remark);
}

void ComparisonWindow::AddRemark(const std::string& text) {
    auto* const item = new QListWidgetItem(QString::fromStdString(text), mFindings);
    item->setFlags(Qt::ItemIsEnabled); // there is nothing to go to
}

void ComparisonWindow::GoToFinding(int row) {
    if (!mReport || row < 0 || row >= static_cast<int>(mReport->findings.size())) return;
    const Finding& finding = mReport->findings[static_cast<std::size_t>(row)];
    mTimeline->SetFinding(row);
    if (finding.frames.empty()) return GoToPicture(mTimeline->Picture());
    const std::int64_t first = finding.frames.front().first;
    GoToPicture(CountsPictures(finding) ? first : mTimeline->PictureOf(first));
}

void ComparisonWindow::GoToPicture(std::int64_t number) {
    if (number < 0 || number >= mTimeline->Count()) return;
    mTimeline->SetPicture(number);
    const PlacedPicture& at = mTimeline->At(number);
    mPlace->setText(at.frame >= 0 ? tr("Picture %1, frame %2").arg(number).arg(at.frame)
                                  : tr("Picture %1, no frame").arg(number));
    mPairs.Want(number, at);
}

void ComparisonWindow::ShowPair(const std::shared_ptr<const PicturePair>& pair) {
    if (pair->number == mTimeline->Picture()) mPictures->SetPair(pair);
}

void ComparisonWindow::SaveReport() {
    const QString name = QFileInfo(FromPath(mVideo)).completeBaseName() + QStringLiteral(".html");
    const QString file = QFileDialog::getSaveFileName(
        this, tr("Save Report"), QFileInfo(FromPath(mVideo)).dir().filePath(name), tr("Web pages (*.html)"));
    if (file.isEmpty()) return;
    try {
        const std::string lost = WriteTextFile(ToPath(file), ReportPage(*mClip, *mReport));
        mSummary->setText(QString::fromStdString(SavedText(ToPath(file), lost)));
    } catch (const Failure& failure) {
        mSummary->setText(QString::fromUtf8(failure.what()));
    } catch (const std::bad_alloc&) {
        mSummary->setText(tr("There is not enough memory for the report."));
    }
}

} // namespace corvane::desktop
