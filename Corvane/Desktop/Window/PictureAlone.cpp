#include "PictureAlone.h"

#include <utility>

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QShortcut>
#include <QStatusBar>
#include <QToolBar>

#include "Desktop/Toolkit/Actions.h"
#include "Desktop/Viewer/Viewer.h"

namespace corvane::desktop {

PictureAlone::PictureAlone(QMainWindow& window, QWidget& list, Viewer& viewer)
    : QObject(&window), mWindow(window), mList(list), mViewer(viewer),
      mAction(MakeAction(window, tr("Full S&creen"), QKeySequence(Qt::Key_F11),
                         tr("Fill the screen with the picture alone; Escape comes back"))),
      mEscape(new QShortcut(QKeySequence(Qt::Key_Escape), &window)) {
    mAction->setCheckable(true);
    // The menu can't be seen then.
    window.addAction(mAction);
    mEscape->setEnabled(false);
    connect(mAction, &QAction::toggled, this, &PictureAlone::Set);
    connect(mEscape, &QShortcut::activated, this, &PictureAlone::Leave);
}

void PictureAlone::Leave() {
    mAction->setChecked(false);
}

void PictureAlone::Enter() {
    QList<QWidget*> others{mWindow.menuBar(), mWindow.statusBar(), &mList};
    for (QToolBar* const bar : mWindow.findChildren<QToolBar*>()) others << bar;
    for (QDockWidget* const dock : mWindow.findChildren<QDockWidget*>()) others << dock;
    for (QWidget* const other : others) {
        if (other->isHidden()) continue;
        other->hide();
        mHidden << other;
    }
}

void PictureAlone::Set(bool alone) {
    mEscape->setEnabled(alone);
    mViewer.ShowPictureAlone(alone);
    if (alone) {
        Enter();
        mViewer.setFocus();
    } else {
        for (const QPointer<QWidget>& other : std::exchange(mHidden, {}))
            if (other) other->show();
    }
    const Qt::WindowStates states = mWindow.windowState();
    mWindow.setWindowState(alone ? states | Qt::WindowFullScreen : states & ~Qt::WindowFullScreen);
}

} // namespace corvane::desktop
