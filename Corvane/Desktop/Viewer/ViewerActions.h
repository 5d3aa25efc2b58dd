#pragma once

#include <QAction>
#include <QList>
#include <QWidget>

namespace corvane::desktop {

/// The viewer's actions, which belong to the viewer.
struct ViewerActions {
    explicit ViewerActions(QWidget& viewer);

    QAction* play;
    QAction* previous;
    QAction* next;
    QAction* first;
    QAction* last;
    QAction* loop;
    QAction* fit;
    QAction* full;
    QAction* bothFields;
    QAction* upperField;
    QAction* lowerField;

    /// In the order of a menu, with separators.
    QList<QAction*> playback;
    QList<QAction*> view;

    /// What can be done: with a clip that can be shown, and with fields of its own.
    void Enable(bool shown, bool interlaced);
    /// The play action's text and icon.
    void ShowPlaying(bool playing);
};

} // namespace corvane::desktop
