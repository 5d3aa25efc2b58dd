#include "lumui.h"

#include <utility>

#include "UIPlatform.h"

namespace lumui {

namespace {

class DrawSupplier final : public drawbot::SupplierInterface {};

} // namespace

ui::UI_NodeManager* ui::UI_NodeManager::Get(bool) {
    static UI_NodeManager manager;
    return &manager;
}

const drawbot::SupplierInterface* ui::UI_NodeManager::GetDefaultDrawSupplier() const {
    static const DrawSupplier supplier;
    return &supplier;
}

controls::ColorPickerDialog::ColorPickerDialog(const drawbot::SupplierInterface*, ui::UI_Node* parent, bool)
    : mParent(parent) {}

void controls::ColorPickerDialog::RunModal() {
    const auto chosen = corvane::NeedPlatform().RunColorPicker({mParent.get(), mColor});
    mAccepted = chosen.has_value();
    if (chosen) mColor = *chosen;
}

dialogs::OS_FileSaveAsDialog::OS_FileSaveAsDialog(ui::UI_Node* parent,
                                                  const std::vector<FileDialogFilterInfo>& filters,
                                                  unsigned long filterIndex, const Mosk::String& defaultName,
                                                  lumcore::utility::Flags<unsigned int> flags)
    : mParent(parent), mFilters(filters), mFilterIndex(filterIndex), mDefaultName(defaultName),
      mFlags(flags) {}

dialogs::OS_FileSaveAsDialog::~OS_FileSaveAsDialog() = default;

std::int32_t dialogs::OS_FileSaveAsDialog::GetOutcome() const {
    return mConfirmed ? kFileDialogOutcome_Confirmed : 0;
}

lumcore::filesupport::File dialogs::OS_FileSaveAsDialog::GetChosenFile() const {
    return lumcore::filesupport::File(mChosenPath);
}

void dialogs::OS_FileSaveAsDialog::RunModal() {
    const bool confirmReplace = (mFlags.GetBits() & kFileDialog_ConfirmReplace) != 0;
    auto path = corvane::NeedPlatform().RunSaveFileDialog(
        {mParent.get(), mFilters, mFilterIndex, mDefaultName, confirmReplace});
    mConfirmed = path.has_value();
    mChosenPath = std::move(path).value_or(Mosk::String());
}

dialogs::UI_MessageBox::UI_MessageBox(const drawbot::SupplierInterface*, const Mosk::String& title,
                                      const Mosk::String& message, int buttons, Button defaultButton,
                                      Icon icon, ui::UI_Node* parent, unsigned int, float, float,
                                      const ui::MessageFunctionPtr&)
    : mTitle(title), mMessage(message), mButtons(buttons), mDefaultButton(defaultButton), mIcon(icon),
      mParent(parent) {}

void dialogs::UI_MessageBox::RunModal() {
    mResponse = corvane::NeedPlatform().RunMessageBox(
        {mParent.get(), mTitle, mMessage, mButtons, mDefaultButton, mIcon});
}

} // namespace lumui
