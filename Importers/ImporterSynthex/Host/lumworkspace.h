/// The host's shell: its windows and the workspaces in them.
///
/// Everything here is owned by the host and valid as long as its window is open. UI thread only.
#pragma once

#include "lumui.h"

namespace lumworkspace::workspace {

/// The arrangement of panels in a top-level window.
class Workspace : public lumui::ui::UI_Node {};

/// A window of the host's own, with its menus.
class TopLevelWindow : public lumui::ui::UI_Node {
  public:
    /// The window's workspace, or null if it has none; the host's.
    virtual Workspace* GetWorkspace() = 0;
};

/// Ways to the shell.
class WorkspaceUtils {
  public:
    /// The host's main window, or null while it shows none (a host that runs from the command line never
    /// does).
    static TopLevelWindow* FindMainTopLevelWindow();
};

} // namespace lumworkspace::workspace
