#pragma once

#include <memory>
#include <optional>

#include <QApplication>
#include <QPointer>

#include "Desktop/Loader/DesktopModule.h"

namespace corvane::desktop {

/// Shows the toolkit's models as windows. UI thread only, which is the one that makes the platform.
class QtPlatform : public UI_Platform {
  public:
    /// Makes Qt's application object if the process has none, and keeps it for as long as the platform lives.
    /// The locale that Qt adopts is kept away from C's numbers. Ends the process, with `options.remedy`, if
    /// Qt can show no windows.
    explicit QtPlatform(const DesktopOptions& options);
    ~QtPlatform() override;

    /// Makes `window` the host's main window, null for none: dialogs that name it or nothing as their parent
    /// belong to it. It is not owned, and may go at any time.
    void SetMainWindow(QWidget* window);

    std::optional<Mosk::String> RunSaveFileDialog(const SaveFileRequest& request) override;
    std::int32_t RunMessageBox(const MessageBoxRequest& request) override;
    std::optional<lumui::controls::ColorRGBA> RunColorPicker(const ColorPickerRequest& request) override;
    lumworkspace::workspace::TopLevelWindow* GetMainTopLevelWindow() override;

  protected:
    void ShowDialog(DialogModel& dialog, lumui::ui::UI_Node* parent) override;

  private:
    class MainWindowNode;

    QWidget* ParentWindow() const;

    std::unique_ptr<QApplication> mApplication;
    QPointer<QWidget> mMainWindow;
    lumui::ui::UI_NodePtr<MainWindowNode> mMainWindowNode; // as long as the platform: plug-ins may keep it
    QString mFolder;                                       // where the next save-file dialog begins
};

} // namespace corvane::desktop
