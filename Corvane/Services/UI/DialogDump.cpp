#include <nlohmann/json.hpp>

#include "ScriptedPlatform.h"

namespace corvane {

namespace {

using Json = nlohmann::ordered_json;

const char* ClassName(WidgetKind kind) {
    switch (kind) {
    case WidgetKind::kPopup: return "UI_Popup";
    case WidgetKind::kNumber: return "UI_NumberEdit";
    case WidgetKind::kCheckbox: return "UI_Checkbox";
    case WidgetKind::kButton: return "UI_Button";
    case WidgetKind::kTextButton: return "UI_TextButton";
    case WidgetKind::kStaticText: return "UI_StaticText";
    case WidgetKind::kGroup:
    case WidgetKind::kRow:
    case WidgetKind::kLabel: break;
    }
    return "";
}

void AddItems(Json& state, const PopupModel& popup) {
    state["items"] = Json::array();
    state["disabledItems"] = Json::array();
    for (const auto& item : popup.GetItems()) {
        if (!item.enabled) state["disabledItems"].push_back(state["items"].size());
        state["items"].push_back(Mosk::ToUTF8(item.text));
    }
}

} // namespace

std::string DumpDialog(const DialogModel& dialog) {
    Json states = Json::object();
    for (const ControlModel* const control : dialog.GetControls()) {
        Json& state = states[control->GetID()];
        state = {{"class", ClassName(control->GetLayout().kind)}, {"enabled", control->IsEnabled()}};
        if (const auto* const popup = dynamic_cast<const PopupModel*>(control)) {
            state["value"] = popup->GetValue();
            AddItems(state, *popup);
        } else if (const auto* const number = dynamic_cast<const NumberModel*>(control)) {
            state["value"] = number->GetValue();
        } else if (const auto* const box = dynamic_cast<const CheckboxModel*>(control)) {
            state["value"] = box->IsChecked();
        } else if (const auto* const text = dynamic_cast<const StaticTextModel*>(control)) {
            state["value"] = Mosk::ToUTF8(text->GetText());
        } else {
            state["title"] = Mosk::ToUTF8(GetButtonTitle(*control));
        }
    }
    return states.dump();
}

} // namespace corvane
