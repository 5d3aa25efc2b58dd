#pragma once

#include <map>
#include <memory>

#include <QDialog>

#include "ControlWidgets.h"
#include "DialogLayout.h"
#include "Services/UI/UIModel.h"

namespace corvane::desktop {

/// The window of a dialog: one widget per control, named by the control's identifier.
///
/// It shows what the controls hold when it is made, and follows them from then on. Esc and the window's close
/// button dismiss the dialog; Return presses its default button. UI thread.
class DialogWindow final : public QDialog, private DialogObserver {
  public:
    /// `dialog` outlives the window.
    DialogWindow(DialogModel& dialog, QWidget* parent);
    ~DialogWindow() override;

    /// Shows the window and returns when the dialog has been closed.
    void Run();

    /// Esc, or the window's close button.
    void reject() override;

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    void ControlChanged(const ControlModel& control, ControlAspect aspect) override;
    void DialogClosed() override;
    void FinishEntry();
    void BuildControls();

    DialogModel& mDialog;
    std::map<const ControlModel*, ControlWidget> mControls;
    std::unique_ptr<DialogLayout> mLayout;
};

} // namespace corvane::desktop
