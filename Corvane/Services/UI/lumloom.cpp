#include "lumloom.h"

#include <algorithm>

#include "UIPlatform.h"

namespace lumloom {

struct UI_Loom::Implementation {
    Mosk::String name;
    const lumui::drawbot::SupplierInterface* supplier;
    lumui::ui::UI_Node* parent;
    lumui::ui::UI_NodePtr<corvane::DialogModel> view;
};

UI_Loom::UI_Loom(const Mosk::String& layoutName, const lumui::drawbot::SupplierInterface* supplier,
                 lumui::ui::UI_Node* parent)
    : mImplementation(new Implementation{layoutName, supplier, parent, {}}) {}

UI_Loom::~UI_Loom() = default;

void UI_Loom::Initialize() {}

void UI_Loom::Destruction() {}

void UI_Loom::SetupPostCloseCallback() {}

boost::shared_ptr<std::stringstream> UI_Loom::GetLayoutStream(const Mosk::String&) {
    return {};
}

void UI_Loom::ParseLoomScript(std::stringstream& script, bool buildOnly) {
    corvane::UI_Platform* const platform = buildOnly ? nullptr : &corvane::NeedPlatform();
    auto& view = mImplementation->view;
    view = lumui::ui::MakeNode<corvane::DialogModel>(
        corvane::ParseLayout(script.str(), mImplementation->name), mImplementation->parent);
    Initialize();
    if (!platform) return;
    SetupPostCloseCallback();
    // The view outlives the run whatever the run does to the dialog.
    const auto running = view;
    platform->RunDialog(*running, mImplementation->parent);
    Destruction();
    view.reset();
}

lumui::ui::UI_NodePtr<lumui::ui::UI_DialogView> UI_Loom::GetView() const {
    return mImplementation->view;
}

lumui::ui::UI_NodePtr<lumui::ui::UI_Node> UI_Loom::GetUINodePtr(const std::string& id, bool deep) const {
    const auto& view = mImplementation->view;
    corvane::ControlModel* const control = view ? view->Find(id) : nullptr;
    if (!control) return {};
    const auto& direct = view->GetLayout().children;
    const auto isIt = [&](const corvane::LayoutNode& node) { return node.id == id; };
    if (!deep && std::none_of(direct.begin(), direct.end(), isIt)) return {};
    return &control->GetView();
}

const lumui::drawbot::SupplierInterface* UI_Loom::GetDrawSupplier() const {
    return mImplementation->supplier;
}

} // namespace lumloom
