#pragma once

#include <functional>
#include <string>

#include <QDialog>
#include <gtest/gtest.h>

#include "Desktop/Toolkit/QtPlatform.h"
#include "Services/UI/UIModel.h"

/// The platform of the test program. Made when it is first needed, and gone before the program ends.
corvane::desktop::QtPlatform& Platform();

/// Does `act` with the next modal window as soon as it waits for a person, and cancels the window if `act`
/// has left it open, so that no failure of a test can wait forever.
void WhenShown(const std::function<void(QDialog&)>& act);

/// Gives the events that are due to the widgets.
void Settle();

/// A dialog of a test's own: two buttons, and what `rows` adds above them. It notes the ids of what reports
/// changes.
class TestDialog {
  public:
    explicit TestDialog(const std::string& rows);
    ~TestDialog();

    corvane::DialogModel& Model() { return *mModel; }
    template <class Control>
    Control& Get(const char* id) {
        return dynamic_cast<Control&>(*mModel->Find(id));
    }
    /// Runs the dialog and does `act` in it.
    void Run(const std::function<void(QDialog&)>& act);

    std::vector<std::string> reports; ///< ids in the order of their messages
    std::function<void(const std::string&)> onReport;

  private:
    lumui::ui::UI_NodePtr<corvane::DialogModel> mModel;
};

/// A widget by its name, which for a control of the toolkit is its identifier.
template <class Widget>
Widget& Find(QWidget& window, const char* id) {
    auto* const widget = window.findChild<Widget*>(QString::fromLatin1(id));
    if (widget == nullptr) throw std::runtime_error(std::string("no widget ") + id);
    return *widget;
}
