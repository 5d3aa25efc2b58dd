#include <nlohmann/json.hpp>

#include "ScriptedPlatform.h"

namespace corvane {

namespace {

using Json = nlohmann::ordered_json;

/// The name of the contract's class.
constexpr PerClass kClassName{
    [](PopupModel*) { return "UI_Popup"; },           [](NumberModel*) { return "UI_NumberEdit"; },
    [](CheckboxModel*) { return "UI_Checkbox"; },     [](ButtonModel*) { return "UI_Button"; },
    [](TextButtonModel*) { return "UI_TextButton"; }, [](StaticTextModel*) { return "UI_StaticText"; },
};

void AddItems(Json& state, const PopupModel& popup) {
    state["items"] = Json::array();
    state["disabledItems"] = Json::array();
    for (const auto& item : popup.GetItems()) {
        if (!item.enabled) state["disabledItems"].push_back(state["items"].size());
        state["items"].push_back(Mosk::ToUTF8(item.text));
    }
}

Json StateOf(ControlModel& control) {
    const ControlClass kind = control.AsClass();
    Json state{{"class", std::visit(kClassName, kind)}, {"enabled", control.IsEnabled()}};
    std::visit(PerClass{
                   [&](PopupModel* popup) {
                       state["value"] = popup->GetValue();
                       AddItems(state, *popup);
                   },
                   [&](NumberModel* number) { state["value"] = number->GetValue(); },
                   [&](CheckboxModel* box) { state["value"] = box->IsChecked(); },
                   [&](StaticTextModel* text) { state["value"] = Mosk::ToUTF8(text->GetText()); },
                   [&](auto* button) { state["title"] = Mosk::ToUTF8(button->GetTitle()); },
               },
               kind);
    return state;
}

} // namespace

std::string DumpDialog(const DialogModel& dialog) {
    Json states = Json::object();
    for (ControlModel* const control : dialog.GetControls()) states[control->GetID()] = StateOf(*control);
    return states.dump();
}

} // namespace corvane
