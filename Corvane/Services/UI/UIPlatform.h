/// The side of the UI toolkit that people see: who shows the toolkit's models and runs its modal loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Mosk.h"
#include "UIModel.h"
#include "lumui.h"
#include "lumworkspace.h"

namespace corvane {

/// The system's save-file dialog, as asked for.
struct SaveFileRequest {
    lumui::ui::UI_Node* parent; ///< may be null
    std::vector<lumui::dialogs::FileDialogFilterInfo> filters;
    std::size_t filterIndex; ///< the filter to begin with
    Mosk::String defaultName;
    bool confirmReplace; ///< ask before an existing file is chosen
};

/// A question with buttons, as asked for. `buttons` has the bits of `lumui::dialogs::UI_MessageBox::Button`.
struct MessageBoxRequest {
    lumui::ui::UI_Node* parent; ///< may be null
    Mosk::String title, message;
    int buttons;
    lumui::dialogs::UI_MessageBox::Button defaultButton;
    lumui::dialogs::UI_MessageBox::Icon icon;
};

/// The color picker, as asked for.
struct ColorPickerRequest {
    lumui::ui::UI_Node* parent; ///< may be null
    lumui::controls::ColorRGBA color;
};

/// Shows the toolkit's models to a person, or to a script.
///
/// All calls come on the UI thread. The modal runs nest: a save-file dialog is asked for while `RunDialog`
/// runs, from within one of the dialog's operations. A platform may throw from any of them; inside a dialog,
/// that ends the dialog.
class UI_Platform {
  public:
    UI_Platform() = default;
    UI_Platform(const UI_Platform&) = delete;
    UI_Platform& operator=(const UI_Platform&) = delete;
    virtual ~UI_Platform() = default;

    /// Shows a dialog, with the values its controls hold now, and returns when it has been closed
    /// (`DialogModel::IsClosed`). `parent` may be null. Throws what the platform throws, and what the plug-in
    /// threw in answer to a person.
    void RunDialog(DialogModel& dialog, lumui::ui::UI_Node* parent);
    /// How many dialogs were shown so far, those included that could not be worked to their end.
    std::size_t CountDialogs() const { return mDialogs; }

    /// Asks where to save; nothing if the person cancelled. The path is absolute.
    virtual std::optional<Mosk::String> RunSaveFileDialog(const SaveFileRequest& request) = 0;
    /// Asks a question; returns the button that was pressed, one of `request.buttons`.
    virtual std::int32_t RunMessageBox(const MessageBoxRequest& request) = 0;
    /// Asks for a color; nothing if the person cancelled.
    virtual std::optional<lumui::controls::ColorRGBA> RunColorPicker(const ColorPickerRequest& request) = 0;
    /// The host's main window; null if it shows none.
    virtual lumworkspace::workspace::TopLevelWindow* GetMainTopLevelWindow() { return nullptr; }

  protected:
    /// The platform's own part of `RunDialog`: shows the dialog and returns when it has been closed. Whoever
    /// observes the dialog meanwhile no longer does so afterwards, whatever happens.
    virtual void ShowDialog(DialogModel& dialog, lumui::ui::UI_Node* parent) = 0;

  private:
    std::size_t mDialogs = 0;
};

/// The process's platform. Null until it is set.
UI_Platform* GetPlatform();

/// The process's platform. Throws `std::runtime_error` if there is none.
UI_Platform& NeedPlatform();

/// Makes `platform` (not owned; null for none) the process's platform.
void SetPlatform(UI_Platform* platform);

/// Makes a platform, which it does not own, the process's for the length of a scope.
class ScopedPlatform {
  public:
    explicit ScopedPlatform(UI_Platform& platform) : mPrevious(GetPlatform()) { SetPlatform(&platform); }
    ~ScopedPlatform() { SetPlatform(mPrevious); }
    ScopedPlatform(const ScopedPlatform&) = delete;
    ScopedPlatform& operator=(const ScopedPlatform&) = delete;

  private:
    UI_Platform* mPrevious;
};

/// `path` with the filter's default extension if its last part has no extension, for platforms whose system
/// dialog does not add it. Any thread.
Mosk::String WithDefaultExtension(Mosk::String path, const SaveFileRequest& request);

} // namespace corvane
