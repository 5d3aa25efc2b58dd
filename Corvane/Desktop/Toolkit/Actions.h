#pragma once

#include <functional>

#include <QAction>
#include <QKeySequence>
#include <QString>

namespace corvane::desktop {

/// Gives an action a key (an empty one for none) and a tip: the tool tip names the key as well, the status
/// bar doesn't. UI thread.
void Describe(QAction& action, const QKeySequence& key, const QString& tip);

/// Makes an action with its text, key and tip; `act`, if there is one, is done when it is triggered. The
/// action belongs to `owner`. UI thread.
QAction* MakeAction(QObject& owner, const QString& text, const QKeySequence& key, const QString& tip,
                    std::function<void()> act = {});

} // namespace corvane::desktop
