#include "lumworkspace.h"

#include "UIPlatform.h"

namespace lumworkspace::workspace {

TopLevelWindow* WorkspaceUtils::FindMainTopLevelWindow() {
    corvane::UI_Platform* const platform = corvane::GetPlatform();
    return platform ? platform->GetMainTopLevelWindow() : nullptr;
}

} // namespace lumworkspace::workspace
