#include "MainWindow.h"

#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include "Desktop/Comparison/ComparisonWindow.h"
#include "Desktop/Exports/ExportDialog.h"
#include "Desktop/Exports/ExportPanel.h"
#include "Desktop/Toolkit/Actions.h"
#include "Desktop/Toolkit/Text.h"
#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"
#include "PictureAlone.h"

namespace corvane::desktop {

namespace {

constexpr QSize kThumbnail(96, 54);
constexpr QSize kFirstSize(1240, 760);
// Raised when docks or tool bars change, so that an earlier arrangement is not applied.
constexpr int kStateVersion = 1;
constexpr char kGeometryKey[] = "window/geometry", kStateKey[] = "window/state",
               kSplitterKey[] = "window/splitter", kColumnsKey[] = "window/columns",
               kComparedKey[] = "window/compared";

QStringList LocalFiles(const QMimeData& data) {
    QStringList files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile()) files << url.toLocalFile();
    return files;
}

} // namespace

MainWindow::MainWindow(QtPlatform& platform, std::shared_ptr<Bundle> bundle, Options options)
    : mPlatform(platform), mBundle(std::move(bundle)), mVersion(std::move(options.version)),
      mAutosave(mDocument, std::move(options.autosaveFolder)),
      mModel(mDocument, mBundle, kThumbnail, devicePixelRatioF()), mMessages(new MessageBar(this)),
      mSplitter(new QSplitter(this)), mBin(new BinView(mModel, mSplitter)), mViewer(new Viewer(mSplitter)),
      mAlone(new PictureAlone(*this, *mBin, *mViewer)),
      mProjectActions(new ProjectActions(mDocument, mAutosave, *mMessages, *this)),
      mClipActions(new ClipActions(mDocument, mBundle, mModel, *mBin, *mMessages)) {
    mProjectActions->setParent(this);
    mClipActions->setParent(this);
    setAcceptDrops(true);
    mSplitter->setObjectName(QStringLiteral("splitter"));
    mSplitter->setChildrenCollapsible(false);
    mSplitter->setStretchFactor(1, 1);
    auto* const center = new QWidget(this);
    auto* const column = new QVBoxLayout(center);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(mMessages);
    column->addWidget(mSplitter, 1);
    setCentralWidget(center);
    BuildExports();
    BuildMenus();
    BuildToolBar();
    statusBar();
    connect(mProjectActions, &ProjectActions::OpenWanted, this, &MainWindow::OpenFiles);
    connect(mClipActions, &ClipActions::ExportWanted, this, &MainWindow::ExportClips);
    connect(mClipActions, &ClipActions::CompareWanted, this, &MainWindow::CompareClip);
    connect(mBin, &BinView::ChoiceChanged, this, &MainWindow::ShowCurrent);
    connect(&mModel, &BinModel::ClipLoaded, this, [this](std::uint64_t id) {
        if (id == mBin->Current()) ShowCurrent();
    });
    connect(&mModel, &BinModel::dataChanged, this, &MainWindow::ShowClipName);
    connect(&mDocument, &Document::Changed, this, &MainWindow::ShowTitle);
    connect(&mDocument, &Document::Saved, this, &MainWindow::ShowTitle);
    ShowTitle();
    RestoreState();
    ShowCurrent();
    mPlatform.SetMainWindow(this);
    mBin->setFocus();
    mBin->installEventFilter(this);
}

MainWindow::~MainWindow() {
    mPlatform.SetMainWindow(nullptr);
    // They use members, which are destroyed before the window's children would be.
    delete mProjectActions;
    delete mClipActions;
    delete mExports;
    delete centralWidget();
}

void MainWindow::RestoreState() {
    const QSettings settings;
    if (!restoreGeometry(settings.value(QLatin1StringView(kGeometryKey)).toByteArray())) resize(kFirstSize);
    restoreState(settings.value(QLatin1StringView(kStateKey)).toByteArray(), kStateVersion);
    if (!mSplitter->restoreState(settings.value(QLatin1StringView(kSplitterKey)).toByteArray()))
        mSplitter->setSizes({kFirstSize.width() * 9 / 20, kFirstSize.width() * 11 / 20});
    mBin->RestoreColumns(settings.value(QLatin1StringView(kColumnsKey)).toByteArray());
}

void MainWindow::Begin(const QStringList& files) {
    mProjectActions->OfferLost();
    // A project that was recovered is open already, with what its file does not hold.
    QStringList others = files;
    others.removeIf([this](const QString& file) {
        return !mDocument.GetPath().empty() &&
               std::filesystem::absolute(ToPath(file)).lexically_normal() == mDocument.GetPath();
    });
    OpenFiles(others);
}

void MainWindow::OpenFiles(const QStringList& files) {
    QString project;
    QStringList clips;
    for (const QString& file : files) {
        if (!file.endsWith(QLatin1StringView(kProjectSuffix), Qt::CaseInsensitive))
            clips << file;
        else if (project.isEmpty())
            project = file;
        else
            mMessages->Tell(tr("%1: one project is open at a time; open this one by itself.").arg(file));
    }
    if (!project.isEmpty()) mProjectActions->Open(ToPath(project));
    if (!clips.isEmpty()) mClipActions->AddFiles(clips);
    if (mBin->Current() == 0) mBin->Choose(mModel.IdAt(0));
}

void MainWindow::ShowCurrent() {
    const std::uint64_t id = mBin->Current();
    const bool same = std::exchange(mShown, id) == id;
    const LoadedClip* const loaded = mModel.LoadedAt(mModel.RowOf(id));
    if (loaded == nullptr) {
        // The present picture stays until the clip's next state is known.
        if (!same || id == 0) mViewer->SetClip(nullptr, {}, false);
        return;
    }
    const QString name = QString::fromStdString(mModel.ClipAt(mModel.RowOf(id)).name);
    if (!loaded->problem.isEmpty())
        mViewer->SetProblem(name, loaded->problem);
    else
        mViewer->SetClip(loaded->clip, name, same);
}

void MainWindow::ShowClipName() {
    if (const int row = mModel.RowOf(mShown); mModel.LoadedAt(row) != nullptr)
        mViewer->SetName(QString::fromStdString(mModel.ClipAt(row).name));
}

void MainWindow::ShowTitle() {
    setWindowTitle(tr("%1[*] – Synthex").arg(mDocument.GetName()));
    setWindowModified(mDocument.IsModified());
    setWindowFilePath(FromPath(mDocument.GetPath()));
}

void MainWindow::PrepareToEnd() {
    mHasEnded = true;
    mExports->CancelAll();
    mAutosave.Flush();
}

void MainWindow::CloseWhenShown() {
    connect(&mModel, &BinModel::ClipLoaded, this, [this] {
        mBin->viewport()->repaint();
        mHasEnded = true;
        close();
    });
}

void MainWindow::BuildExports() {
    auto* const dock = new QDockWidget(tr("Exports"), this);
    dock->setObjectName(QStringLiteral("exports"));
    dock->setAllowedAreas(Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea);
    mExports = new ExportPanel(mBundle, dock);
    dock->setWidget(mExports);
    Describe(*dock->toggleViewAction(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_X),
             tr("Show or hide the exports that run and those that are done"));
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    constexpr int kSomeRows = 190;
    resizeDocks({dock}, {kSomeRows}, Qt::Vertical);
    dock->hide();
    connect(mExports, &ExportPanel::JobFinished, this, [this](const QString& name, ExportState state) {
        if (state == ExportState::kDone) statusBar()->showMessage(tr("%1: the export is done.").arg(name));
    });
}

void MainWindow::ExportClips(const std::vector<std::uint64_t>& ids) {
    for (const std::uint64_t id : ids) {
        const int row = mModel.RowOf(id);
        const LoadedClip* const loaded = mModel.LoadedAt(row);
        if (loaded == nullptr || !loaded->problem.isEmpty()) continue;
        // Copies, because the clip may change while the dialog is open.
        const std::shared_ptr<const Clip> clip = loaded->clip;
        const ProjectClip about = mModel.ClipAt(row);
        const std::filesystem::path& beside = about.source.IsFile() ? about.source.file : mDocument.GetPath();
        const ExportPlace place{.folder = FromPath(beside.parent_path()),
                                .frame = id == mShown ? mViewer->CurrentFrame() : 0,
                                .isTaken = [this](const auto& file) { return mExports->IsTaken(file); }};
        ExportDialog dialog(*clip, QString::fromStdString(about.name), place, this);
        if (dialog.exec() != QDialog::Accepted) return;
        // The settings as they are now: those of a file may change before the export's turn comes.
        mExports->AddJob({.name = about.name,
                          .source = {.file = {}, .settings = clip->Settings()},
                          .options = dialog.Options()});
        findChild<QDockWidget*>(QStringLiteral("exports"))->show();
    }
}

void MainWindow::CompareClip(std::uint64_t id) {
    const int row = mModel.RowOf(id);
    const LoadedClip* const loaded = mModel.LoadedAt(row);
    if (loaded == nullptr || !loaded->problem.isEmpty()) return;
    // Copies, because the clip may change while the dialog is open.
    const std::shared_ptr<const Clip> clip = loaded->clip;
    const QString name = QString::fromStdString(mModel.ClipAt(row).name);
    QSettings settings;
    const QString video = QFileDialog::getOpenFileName(
        this, tr("Compare %1 with a Video").arg(name),
        settings.value(QLatin1StringView(kComparedKey)).toString(), tr("Videos and pictures (*)"));
    if (video.isEmpty()) return;
    settings.setValue(QLatin1StringView(kComparedKey), QFileInfo(video).path());
    (new ComparisonWindow(clip, name, ToPath(video), this))->show();
}

bool MainWindow::LeavesExports() {
    if (!mExports->HasUnfinishedJobs()) return true;
    QMessageBox box(
        QMessageBox::Warning, tr("Exports Are Running"),
        tr("Not all exports are finished. Do you want to cancel them? They leave no file behind."),
        QMessageBox::Yes | QMessageBox::No, this);
    box.setObjectName(QStringLiteral("exporting"));
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!mHasEnded) {
        if (!LeavesExports() || !mProjectActions->LeavesChanges()) return event->ignore();
        mAutosave.Discard();
        mHasEnded = true;
    }
    mExports->CancelAll();
    mAlone->Leave();
    QSettings settings;
    settings.setValue(QLatin1StringView(kGeometryKey), saveGeometry());
    settings.setValue(QLatin1StringView(kStateKey), saveState(kStateVersion));
    settings.setValue(QLatin1StringView(kSplitterKey), mSplitter->saveState());
    settings.setValue(QLatin1StringView(kColumnsKey), mBin->SaveColumns());
    event->accept();
}

// Keys that would scroll the list sideways, or do nothing there, act on the viewer.
bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != mBin || event->type() != QEvent::KeyPress) return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    return (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
           mViewer->TakeKey(static_cast<Qt::Key>(key.key()));
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!LocalFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    // The program that the files come from waits for the end of this event, and there may be questions.
    QTimer::singleShot(0, this, [this, files = LocalFiles(*event->mimeData())] { OpenFiles(files); });
}

} // namespace corvane::desktop
