#pragma once

#include <QAction>
#include <QList>
#include <QWidget>

namespace corvane::desktop {

/// The viewer's actions. UI thread.
struct ViewerActions {
    /// Makes the actions, which belong to `viewer`.
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

    /// The actions in the order of two menus, with separators.
    QList<QAction*> playback;
    QList<QAction*> view;

    /// Enables what can be done: whether there is a clip to show, and whether it has fields.
    void Enable(bool shown, bool interlaced);
    /// Gives the play action the text and the icon of what it does next.
    void ShowPlaying(bool playing);
};

} // namespace corvane::desktop
