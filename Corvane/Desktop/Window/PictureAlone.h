#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class QAction;
class QMainWindow;
class QShortcut;

namespace corvane::desktop {

class Viewer;

/// The picture fills the screen, and nothing else of the window is seen. The viewer's keys go on working. UI
/// thread.
class PictureAlone final : public QObject {
    Q_OBJECT

  public:
    /// All of them outlive it. `list` is what stands beside the viewer.
    PictureAlone(QMainWindow& window, QWidget& list, Viewer& viewer);

    /// For a menu: F11, which goes there and back. Escape goes back, too.
    QAction* Action() const { return mAction; }
    /// Goes back, if it is there.
    void Leave();

  private:
    void Enter();
    void Set(bool alone);

    QMainWindow& mWindow;
    QWidget& mList;
    Viewer& mViewer;
    QAction* mAction;
    QShortcut* mEscape;
    QList<QPointer<QWidget>> mHidden; // what is to be shown again
};

} // namespace corvane::desktop
