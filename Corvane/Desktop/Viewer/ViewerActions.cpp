#include "ViewerActions.h"

#include <QActionGroup>

#include "Desktop/Toolkit/Actions.h"
#include "TransportIcons.h"

namespace corvane::desktop {

namespace {

QAction* Make(QWidget& viewer, TransportSymbol symbol, const char* name, const QString& text,
              const QKeySequence& key, const QString& tip) {
    QAction* const action = MakeAction(viewer, text, key, tip);
    action->setIcon(MakeTransportIcon(symbol));
    action->setObjectName(QString::fromLatin1(name));
    // Plain keys belong to the viewer alone, so that lists and fields beside it keep them.
    const bool plain = !key.isEmpty() && (key[0].keyboardModifiers() & Qt::ControlModifier) == 0;
    action->setShortcutContext(plain ? Qt::WidgetWithChildrenShortcut : Qt::WindowShortcut);
    viewer.addAction(action);
    return action;
}

QAction* Separator(QWidget& viewer) {
    auto* const action = new QAction(&viewer);
    action->setSeparator(true);
    return action;
}

void Choose(QObject& owner, const QList<QAction*>& choices) {
    auto* const group = new QActionGroup(&owner);
    for (QAction* const choice : choices) {
        choice->setCheckable(true);
        group->addAction(choice);
    }
    choices.front()->setChecked(true);
}

} // namespace

ViewerActions::ViewerActions(QWidget& viewer)
    : play(Make(viewer, TransportSymbol::kPlay, "playAction", QObject::tr("&Play"), {Qt::Key_Space},
                QObject::tr("Play or pause"))),
      previous(Make(viewer, TransportSymbol::kPrevious, "previousFrameAction", QObject::tr("P&revious Frame"),
                    {Qt::Key_Left}, QObject::tr("Go back one frame"))),
      next(Make(viewer, TransportSymbol::kNext, "nextFrameAction", QObject::tr("&Next Frame"),
                {Qt::Key_Right}, QObject::tr("Go on one frame"))),
      first(Make(viewer, TransportSymbol::kFirst, "firstFrameAction", QObject::tr("&First Frame"),
                 {Qt::Key_Home}, QObject::tr("Go to the first frame"))),
      last(Make(viewer, TransportSymbol::kLast, "lastFrameAction", QObject::tr("La&st Frame"), {Qt::Key_End},
                QObject::tr("Go to the last frame"))),
      loop(Make(viewer, TransportSymbol::kLoop, "loopAction", QObject::tr("&Loop"), {Qt::CTRL | Qt::Key_L},
                QObject::tr("Begin again at the end"))),
      fit(Make(viewer, TransportSymbol::kFit, "fitAction", QObject::tr("&Fit"), {Qt::CTRL | Qt::Key_0},
               QObject::tr("Show the whole picture as large as there is room"))),
      full(Make(viewer, TransportSymbol::kFull, "fullSizeAction", QObject::tr("&100 %"),
                {Qt::CTRL | Qt::Key_1}, QObject::tr("Show one row of the frame in one row of the screen"))),
      bothFields(Make(viewer, TransportSymbol::kBothFields, "bothFieldsAction", QObject::tr("&Both Fields"),
                      {}, QObject::tr("Show the lines of both fields"))),
      upperField(Make(viewer, TransportSymbol::kUpperField, "upperFieldAction",
                      QObject::tr("&Upper Field Only"), {},
                      QObject::tr("Fill the picture with the lines of the upper field"))),
      lowerField(Make(viewer, TransportSymbol::kLowerField, "lowerFieldAction",
                      QObject::tr("L&ower Field Only"), {},
                      QObject::tr("Fill the picture with the lines of the lower field"))),
      playback{play, Separator(viewer), previous, next, first, last, Separator(viewer), loop},
      view{fit, full, Separator(viewer), bothFields, upperField, lowerField} {
    play->setAutoRepeat(false);
    loop->setCheckable(true);
    loop->setAutoRepeat(false);
    Choose(viewer, {fit, full});
    Choose(viewer, {bothFields, upperField, lowerField});
}

void ViewerActions::Enable(bool shown, bool interlaced) {
    for (QAction* const action : {play, previous, next, first, last}) action->setEnabled(shown);
    for (QAction* const action : {bothFields, upperField, lowerField})
        action->setEnabled(shown && interlaced);
}

void ViewerActions::ShowPlaying(bool playing) {
    play->setIcon(MakeTransportIcon(playing ? TransportSymbol::kPause : TransportSymbol::kPlay));
    play->setText(playing ? QObject::tr("&Pause") : QObject::tr("&Play"));
}

} // namespace corvane::desktop
