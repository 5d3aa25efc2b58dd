#pragma once

#include <functional>

#include <QWidget>

#include "Services/UI/UIModel.h"

namespace corvane::desktop {

/// A control as people see it. The widget is named by the control's identifier and owned by its parent.
struct ControlWidget {
    QWidget* widget = nullptr;
    /// Makes the widget show what its model holds: all but the enabled state, which is the same for all
    /// widgets.
    std::function<void(ControlAspect)> update;
};

/// Makes the widget of a control, with what the control holds now. What the person does goes to `dialog`;
/// before anything but text is taken, `finishEntry` finishes the entry that is being typed elsewhere. The
/// dialog and the control outlive the widget. UI thread.
ControlWidget MakeControlWidget(DialogModel& dialog, ControlModel& control, QWidget* parent,
                                const std::function<void()>& finishEntry);

/// Paints the color that a button's layout names on it. Does nothing if it names none. UI thread.
void UpdateSwatch(const DialogModel& dialog, const ControlModel& button, QWidget* widget);

} // namespace corvane::desktop
