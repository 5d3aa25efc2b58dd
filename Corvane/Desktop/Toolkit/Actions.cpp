#include "Actions.h"

#include <utility>

namespace corvane::desktop {

void Describe(QAction& action, const QKeySequence& key, const QString& tip) {
    action.setShortcut(key);
    action.setStatusTip(tip);
    action.setToolTip(
        key.isEmpty() ? tip : QStringLiteral("%1 (%2)").arg(tip, key.toString(QKeySequence::NativeText)));
}

QAction* MakeAction(QObject& owner, const QString& text, const QKeySequence& key, const QString& tip,
                    std::function<void()> act) {
    auto* const action = new QAction(text, &owner);
    Describe(*action, key, tip);
    if (act) QObject::connect(action, &QAction::triggered, &owner, std::move(act));
    return action;
}

} // namespace corvane::desktop
