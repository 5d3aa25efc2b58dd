/// Ways from the plug-in to the host's shell. UI thread.
#pragma once

#include "lumui.h"
#include "lumworkspace.h"

/// The host's main top-level window; null if it shows none.
[[gnu::visibility("default")]] lumworkspace::workspace::TopLevelWindow* GetTopLevelMenu();

/// What the host's windows draw with.
[[gnu::visibility("default")]] const lumui::drawbot::SupplierInterface* GetDrawSupplier();

/// The workspace of the main top-level window; null if there is none. For hosts: the plug-in itself does not
/// ask.
[[gnu::visibility("default")]] lumworkspace::workspace::Workspace* GetWorkspace();
