#include "DialogWindow.h"

#include <algorithm>
#include <memory>

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QPushButton>

#include "Text.h"

namespace corvane::desktop {

DialogWindow::DialogWindow(DialogModel& dialog, QWidget* parent) : QDialog(parent), mDialog(dialog) {
    setWindowTitle(ToQt(dialog.GetLayout().title));
    BuildControls();
    mLayout = std::make_unique<DialogLayout>(mDialog.GetLayout(), *this);
    mDialog.SetObserver(this);
    // What is typed at once replaces the first number.
    if (auto* const first = dynamic_cast<QAbstractSpinBox*>(nextInFocusChain())) first->selectAll();
}

DialogWindow::~DialogWindow() {
    mDialog.SetObserver(nullptr);
}

void DialogWindow::BuildControls() {
    QWidget* previous = nullptr;
    for (ControlModel* const control : mDialog.GetControls()) {
        ControlWidget made = MakeControlWidget(mDialog, *control, this, [this] { FinishEntry(); });
        QWidget* const widget = made.widget;
        if (dynamic_cast<QComboBox*>(widget) || dynamic_cast<QAbstractSpinBox*>(widget)) {
            // The wheel changes what has the focus, not what the pointer happens to be over.
            widget->setFocusPolicy(Qt::StrongFocus);
            widget->installEventFilter(this);
        }
        if (auto* const button = dynamic_cast<QPushButton*>(widget)) {
            const Layout& layout = mDialog.GetLayout();
            button->setDefault(control->GetID() == layout.defaultButton);
            // Return is for the buttons that end the dialog, even if another one has the focus.
            button->setAutoDefault(button->isDefault() || control->GetID() == layout.cancelButton);
        }
        // As if by Tab, so that what is typed at once replaces the first number.
        if (previous != nullptr)
            setTabOrder(previous, widget);
        else
            widget->setFocus(Qt::TabFocusReason);
        previous = widget;
        mControls.emplace(control, std::move(made));
    }
}

void DialogWindow::Run() {
    if (mDialog.IsClosed()) return;
    exec();
    // The loop also ends with the application.
    if (!mDialog.IsClosed()) mDialog.Dismiss();
    if (!mDialog.IsClosed()) mDialog.Close();
}

void DialogWindow::reject() {
    mDialog.Dismiss();
}

bool DialogWindow::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Wheel && object->isWidgetType() &&
        !static_cast<QWidget*>(object)->hasFocus()) {
        event->ignore();
        return true;
    }
    return QDialog::eventFilter(object, event);
}

/// A number that is being typed counts even if the person goes on without leaving its field, as with a
/// mnemonic.
void DialogWindow::FinishEntry() {
    for (QDoubleSpinBox* const field : findChildren<QDoubleSpinBox*>()) field->interpretText();
}

void DialogWindow::ControlChanged(const ControlModel& control, ControlAspect aspect) {
    const auto found = mControls.find(&control);
    if (found == mControls.end()) return;
    const ControlWidget& changed = found->second;
    if (aspect == ControlAspect::kEnabled)
        changed.widget->setEnabled(control.IsEnabled());
    else
        changed.update(aspect);
    if (aspect == ControlAspect::kTitle) mLayout->AlignColumns();
    for (const auto& [button, shown] : mControls) {
        const auto& channels = button->GetLayout().swatch;
        if (std::find(channels.begin(), channels.end(), control.GetID()) != channels.end())
            UpdateSwatch(mDialog, *button, shown.widget);
    }
}

void DialogWindow::DialogClosed() {
    done(QDialog::Accepted);
}

} // namespace corvane::desktop
