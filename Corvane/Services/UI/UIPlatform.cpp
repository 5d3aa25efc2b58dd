#include "UIPlatform.h"

#include <stdexcept>

namespace corvane {

namespace {

UI_Platform* gPlatform = nullptr;

} // namespace

void UI_Platform::RunDialog(DialogModel& dialog, lumui::ui::UI_Node* parent) {
    ++mDialogs;
    ShowDialog(dialog, parent);
    dialog.RethrowFailure();
}

UI_Platform* GetPlatform() {
    return gPlatform;
}

UI_Platform& NeedPlatform() {
    if (gPlatform) return *gPlatform;
    throw std::runtime_error("The host was started without a user interface, so it can't show a dialog");
}

void SetPlatform(UI_Platform* platform) {
    gPlatform = platform;
}

Mosk::String WithDefaultExtension(Mosk::String path, const SaveFileRequest& request) {
    if (request.filterIndex >= request.filters.size()) return path;
    const Mosk::String& extension = request.filters[request.filterIndex].mDefaultExtension;
    const Mosk::String name = Mosk::PathUtils::GetFilePart(path);
    const auto dot = name.rfind(u'.');
    const bool hasOne = dot != name.npos && dot > 0 && dot + 1 < name.size();
    if (extension.empty() || name.empty() || hasOne) return path;
    if (!path.ends_with(u'.')) path += u'.';
    return path + extension;
}

} // namespace corvane
