#include <QActionGroup>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QKeySequence>
#include <QMenuBar>
#include <QMessageBox>
#include <QStyle>
#include <QToolBar>
#include <QUrl>

#include "Appearance.h"
#include "Desktop/Exports/ExportPanel.h"
#include "MainWindow.h"

namespace corvane::desktop {

namespace {

void SetTip(QAction& action, const QString& tip) {
    action.setToolTip(tip);
    action.setStatusTip(tip);
}

/// Shows the shortcut in the tool tip, too, where people who use the pointer find it.
void AddShortcutToTip(QAction& action) {
    if (!action.shortcut().isEmpty())
        action.setToolTip(QStringLiteral("%1 (%2)").arg(
            action.toolTip(), action.shortcut().toString(QKeySequence::NativeText)));
}

} // namespace

void MainWindow::BuildMenus() {
    QMenu& file = *menuBar()->addMenu(tr("&File"));
    BuildEditMenu();
    QMenu& project = *menuBar()->addMenu(tr("Pro&ject"));
    QMenu& clip = *menuBar()->addMenu(tr("&Clip"));
    mProjectActions->AddTo(file, project);
    mClipActions->AddTo(clip);
    QAction* const refresh = project.addAction(tr("&Look for Changed Files"), QKeySequence::Refresh, &mModel,
                                               [this] { mModel.Refresh(); });
    SetTip(*refresh, tr("Open again what could not be opened, and what changed on the disk"));
    file.addSeparator();
    QAction* const quit = file.addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);
    SetTip(*quit, tr("Close the window"));
    QMenu& playback = *menuBar()->addMenu(tr("&Playback"));
    playback.addActions(mViewer->PlaybackActions());
    BuildViewMenu();
    BuildHelpMenu();
}

void MainWindow::BuildEditMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&Edit"));
    QUndoStack& steps = mDocument.GetUndoStack();
    QAction* const undo = steps.createUndoAction(this, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* const redo = steps.createRedoAction(this, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    menu.addActions({undo, redo});
    menu.addSeparator();
    QAction* const all = menu.addAction(tr("Select &All Clips"), mBin, &QAbstractItemView::selectAll);
    all->setShortcut(QKeySequence::SelectAll);
    SetTip(*all, tr("Select every clip of the bin"));
}

void MainWindow::BuildViewMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&View"));
    menu.addActions(mViewer->ViewActions());
    menu.addSeparator();
    menu.addAction(findChild<QDockWidget*>(QStringLiteral("exports"))->toggleViewAction());
    QMenu& looks = *menu.addMenu(tr("&Appearance"));
    auto* const group = new QActionGroup(this);
    struct Look {
        Appearance appearance;
        QString text;
    };
    const Look all[] = {{Appearance::kSystem, tr("As the &System")},
                        {Appearance::kLight, tr("&Light")},
                        {Appearance::kDark, tr("&Dark")}};
    for (const auto& [appearance, text] : all) {
        QAction* const action = looks.addAction(text);
        action->setCheckable(true);
        action->setChecked(appearance == StoredAppearance());
        group->addAction(action);
        connect(action, &QAction::triggered, this, [look = appearance] {
            StoreAppearance(look);
            ApplyAppearance(look);
        });
    }
    QAction* const full = menu.addAction(tr("Full S&creen"));
    full->setShortcut(QKeySequence(Qt::Key_F11));
    full->setCheckable(true);
    SetTip(*full, tr("Let the window fill the screen"));
    connect(full, &QAction::triggered, this, [this](bool on) {
        setWindowState(on ? windowState() | Qt::WindowFullScreen : windowState() & ~Qt::WindowFullScreen);
    });
}

void MainWindow::BuildHelpMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&Help"));
    // Beside the installed program; there is none in a build tree.
    const QString guide = QDir(QApplication::applicationDirPath())
                              .filePath(QStringLiteral("../share/doc/synthex/UserGuide.md"));
    QAction* const help = menu.addAction(tr("User &Guide"), QKeySequence::HelpContents, this, [this, guide] {
        if (!QDesktopServices::openUrl(QUrl::fromLocalFile(guide)))
            mMessages->Tell(tr("%1: no program shows this guide here; read it in an editor.").arg(guide));
    });
    help->setEnabled(QFileInfo::exists(guide));
    SetTip(*help, tr("Read how to use this window"));
    menu.addAction(tr("&About Synthex"), this, &MainWindow::ShowAbout);
    menu.addAction(tr("About &Qt"), qApp, &QApplication::aboutQt);
}

void MainWindow::BuildToolBar() {
    QToolBar& bar = *addToolBar(tr("Tools"));
    bar.setObjectName(QStringLiteral("tools"));
    bar.setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mClipActions->AddTo(bar);
    for (QAction* const action : bar.actions()) AddShortcutToTip(*action);
}

void MainWindow::ShowAbout() {
    QMessageBox box(QMessageBox::NoIcon, tr("About Synthex"), {}, QMessageBox::Close, this);
    box.setObjectName(QStringLiteral("about"));
    box.setIconPixmap(windowIcon().pixmap(64));
    box.setTextFormat(Qt::PlainText);
    box.setText(
        tr("Synthex %1\n\nSynthetic test clips: known field order, known colors, known frame numbers.")
            .arg(QString::fromStdString(mVersion)));
    box.setInformativeText(tr("Plug-in: %1\nQt %2, compiled against %3")
                               .arg(QString::fromStdString(mBundle->Path().string()),
                                    QString::fromLatin1(qVersion()), QStringLiteral(QT_VERSION_STR)));
    box.exec();
}

} // namespace corvane::desktop
