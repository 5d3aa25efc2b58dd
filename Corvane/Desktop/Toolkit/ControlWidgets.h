#pragma once

#include <functional>

#include <QWidget>

#include "Services/UI/UIModel.h"

namespace corvane::desktop {

/// A control as people see it. The widget is named by the control's identifier and owned by its parent.
struct ControlWidget {
    QWidget* widget = nullptr;
    /// Brings the widget up to its model. All but the enabled state, which all widgets have alike.
    std::function<void(ControlAspect)> update;
};

/// Makes the widget of a control, with what the control holds now. What the person does goes to `dialog`;
/// before anything else than text is taken, `finishEntry` finishes the entry that is being typed elsewhere.
ControlWidget MakeControlWidget(DialogModel& dialog, ControlModel& control, QWidget* parent,
                                const std::function<void()>& finishEntry);

/// Paints the color that a button's layout names on it. Does nothing where it names none.
void UpdateSwatch(const DialogModel& dialog, const ControlModel& button, QWidget* widget);

} // namespace corvane::desktop
