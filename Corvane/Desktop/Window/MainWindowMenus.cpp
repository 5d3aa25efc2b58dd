#include <QActionGroup>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QStyle>
#include <QToolBar>
#include <QUrl>

#include "Appearance.h"
#include "Desktop/Exports/ExportPanel.h"
#include "Desktop/Toolkit/Actions.h"
#include "MainWindow.h"
#include "PictureAlone.h"

namespace corvane::desktop {

void MainWindow::BuildMenus() {
    QMenu& file = *menuBar()->addMenu(tr("&File"));
    BuildEditMenu();
    QMenu& project = *menuBar()->addMenu(tr("Pro&ject"));
    QMenu& clip = *menuBar()->addMenu(tr("&Clip"));
    mProjectActions->AddTo(file, project);
    mClipActions->AddTo(clip);
    project.addAction(MakeAction(*this, tr("&Look for Changed Files"), QKeySequence::Refresh,
                                 tr("Open again what could not be opened, and what changed on the disk"),
                                 [this] { mModel.Refresh(); }));
    file.addSeparator();
    file.addAction(
        MakeAction(*this, tr("&Quit"), QKeySequence::Quit, tr("Close the window"), [this] { close(); }));
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
    menu.addAction(MakeAction(*this, tr("Select &All Clips"), QKeySequence::SelectAll,
                              tr("Select every clip of the bin"), [this] { mBin->selectAll(); }));
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
    menu.addAction(mAlone->Action());
}

void MainWindow::BuildHelpMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&Help"));
    // Beside the program, installed or not.
    const QString guide = QDir(QApplication::applicationDirPath())
                              .filePath(QStringLiteral("../share/doc/synthex/UserGuide.md"));
    QAction* const help = MakeAction(
        *this, tr("User &Guide"), QKeySequence::HelpContents, tr("Read how to use this window"),
        [this, guide] {
            if (!QDesktopServices::openUrl(QUrl::fromLocalFile(guide)))
                mMessages->Tell(tr("%1: no program shows this guide here; read it in an editor.").arg(guide));
        });
    help->setEnabled(QFileInfo::exists(guide));
    menu.addAction(help);
    menu.addAction(tr("&About Synthex"), this, &MainWindow::ShowAbout);
    menu.addAction(tr("About &Qt"), qApp, &QApplication::aboutQt);
}

void MainWindow::BuildToolBar() {
    QToolBar& bar = *addToolBar(tr("Tools"));
    bar.setObjectName(QStringLiteral("tools"));
    bar.setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mClipActions->AddTo(bar);
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
