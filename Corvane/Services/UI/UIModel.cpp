#include "UIModel.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

#include "Services/TestHooks.h"
#include "UIPlatform.h"

namespace corvane {

namespace {

std::atomic<std::int64_t> gLiveNodes = 0;
bool gRaisesProgramMessages = false;

} // namespace

void RaiseProgramMessages(bool raise) {
    gRaisesProgramMessages = raise;
}

std::int64_t CountLiveNodes() {
    return gLiveNodes;
}

LiveNode::LiveNode() {
    ++gLiveNodes;
}

LiveNode::~LiveNode() {
    --gLiveNodes;
}

ControlModel::ControlModel(DialogModel& dialog, const LayoutNode& layout)
    : mDialog(&dialog), mLayout(layout) {}

void ControlModel::SetEnabled(bool enabled) {
    if (std::exchange(mEnabled, enabled) != enabled) Report(ControlAspect::kEnabled);
}

void ControlModel::Report(ControlAspect aspect) {
    if (mDialog && mDialog->mObserver) mDialog->mObserver->ControlChanged(*this, aspect);
}

void ControlModel::ReportSetValue() {
    Report(ControlAspect::kValue);
    if (gRaisesProgramMessages && mDialog) mDialog->Deliver(*this);
}

void PopupModel::AddItem(const Mosk::String& text) {
    mItems.push_back({text});
    Report(ControlAspect::kItems);
}

void PopupModel::SetValue(long index) {
    mValue = HasItem(index) ? index : -1;
    ReportSetValue();
}

void PopupModel::EnableAllItems() {
    for (Item& item : mItems) item.enabled = true;
    Report(ControlAspect::kItems);
}

void PopupModel::DisableItem(long index, bool disabled) {
    if (!HasItem(index)) return;
    mItems[static_cast<std::size_t>(index)].enabled = !disabled;
    Report(ControlAspect::kItems);
}

void NumberModel::SetValue(double value) {
    mValue = value;
    ReportSetValue();
}

void CheckboxModel::SetChecked(bool checked) {
    mChecked = checked;
    ReportSetValue();
}

void TextButtonModel::SetText(const Mosk::String& title) {
    mTitle = title;
    Report(ControlAspect::kTitle);
}

void StaticTextModel::SetValue(const Mosk::String& text) {
    mText = text;
    Report(ControlAspect::kValue);
}

void StaticTextModel::SetTruncation(lumui::controls::TextTruncation truncation) {
    mTruncation = truncation;
    Report(ControlAspect::kValue);
}

DialogModel::DialogModel(Layout layout, lumui::ui::UI_Node* window)
    : mLayout(std::move(layout)), mWindow(window) {
    Build(mLayout.children);
}

DialogModel::~DialogModel() {
    for (ControlModel* const control : mOrder) control->mDialog = nullptr;
}

void DialogModel::Build(const std::vector<LayoutNode>& nodes) {
    for (const LayoutNode& node : nodes) {
        Add(node, ControlClass());
        Build(node.children);
    }
}

template <class Model>
bool DialogModel::AddIfKind(const LayoutNode& node) {
    if (node.kind != Model::kKind) return false;
    const auto control = lumui::ui::MakeNode<Model>(*this, node);
    mNodes.push_back(control);
    mOrder.push_back(control.get());
    return true;
}

/// Makes the control of a node, if it is one.
template <class... Models>
void DialogModel::Add(const LayoutNode& node, std::variant<Models*...>) {
    static_cast<void>((AddIfKind<Models>(node) || ...));
}

ControlModel* DialogModel::Find(const std::string& id) const {
    const auto found = std::ranges::find(mOrder, id, &ControlModel::GetID);
    return found == mOrder.end() ? nullptr : *found;
}

void DialogModel::Close() {
    if (std::exchange(mClosed, true)) return;
    if (mObserver) mObserver->DialogClosed();
}

bool DialogModel::Press(ControlModel& button) {
    if (mClosed || !button.IsEnabled()) return false;
    Deliver(button);
    return true;
}

bool DialogModel::Enter(NumberModel& number, double value) {
    if (mClosed || !number.IsEnabled() || !std::isfinite(value)) return false;
    const double held = number.GetLayout().limits.Hold(value);
    if (std::exchange(number.mValue, held) == held && held == value) return true;
    number.Report(ControlAspect::kValue);
    Deliver(number);
    return true;
}

bool DialogModel::Choose(PopupModel& popup, long index) {
    if (mClosed || !popup.IsEnabled() || !popup.HasItem(index)) return false;
    if (!popup.mItems[static_cast<std::size_t>(index)].enabled) return false;
    popup.mValue = index;
    popup.Report(ControlAspect::kValue);
    Deliver(popup);
    return true;
}

bool DialogModel::Check(CheckboxModel& box, bool checked) {
    if (mClosed || !box.IsEnabled()) return false;
    if (std::exchange(box.mChecked, checked) == checked) return true;
    box.Report(ControlAspect::kValue);
    Deliver(box);
    return true;
}

void DialogModel::Dismiss() {
    ControlModel* const cancel = Find(mLayout.cancelButton);
    if (!cancel || !Press(*cancel)) Close();
}

void DialogModel::Deliver(ControlModel& control) {
    const lumui::ui::UI_NodePtr<lumui::controls::UI_ControlView> alive(&control.GetView());
    lumui::controls::UI_ControlChangedMessage message(alive.get());
    const auto receivers = control.mReceivers; // a receiver may add another
    try {
        for (const auto& receiver : receivers) (*receiver)(&message);
    } catch (...) {
        if (!mFailure) mFailure = std::current_exception();
        Close();
    }
}

void DialogModel::RethrowFailure() {
    if (mFailure) std::rethrow_exception(std::exchange(mFailure, nullptr));
}

} // namespace corvane
