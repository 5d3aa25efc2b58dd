#include "ChoiceTables.h"
#include "DialogImpl.h"

using Dialog = ImporterSynthexPrefsDialogImpl;

namespace {

/// Adds all rows to a popup and selects the one that holds `current`: the last one if several do, the first
/// if none does.
template <class Value>
void FillPopup(lumui::controls::UI_Popup& popup, const ChoiceList<Value>& rows, const Value& current) {
    long selected = 0;
    for (long index = 0; const auto& [value, label] : rows) {
        popup.AddItem(label);
        if (value == current) selected = index;
        ++index;
    }
    popup.SetValue(selected);
}

} // namespace

void Dialog::InitDialogValues() {
    InitFieldTypePopup();
    InitVideoFrameRatePopup();
    InitFrameWidthHeight();
    InitPixelFormatPopup();
    InitPixelAspectPopup();
    InitSaveAsData();
    SetupColorChoiceControls();
    SetupColorButtonChoiceNames();
    Get(kDrawFrameNumber)->SetChecked(mSynthexInfo.mDrawFrameNumber);
    SetupColorTextDisplay();
    mInitialized = true;
}

void Dialog::InitFieldTypePopup() {
    using namespace lummediatypes;
    const auto popup = Get(kFieldTypePopup);
    for (const char* const item : {"Progressive", "Upper Field First", "Lower Field First"})
        popup->AddItem(lumcore::utility::AsciiToUTF16(item));
    const FieldType type = mSynthexInfo.mFieldType;
    popup->SetValue(type == kFieldType_LowerFirst || type == kFieldType_UpperFirst ? type
                                                                                   : kFieldType_Progressive);
    UpdateFieldColorChoicesUI();
}

void Dialog::InitVideoFrameRatePopup() {
    FillPopup(*Get(kFrameRatePopup), GetAllVideoFrameRates(), mSynthexInfo.mVideoFrameRate);
    Get(kDurationSeconds)->SetValue(ToSeconds(mSynthexInfo.mVideoDuration));
    DurationSecondsChanged(nullptr);
}

void Dialog::InitFrameWidthHeight() {
    Get(kFrameWidth)->SetValue(mSynthexInfo.mFrameWidth);
    Get(kFrameHeight)->SetValue(mSynthexInfo.mFrameHeight);
}

void Dialog::InitPixelFormatPopup() {
    FillPopup(*Get(kPixelFormatPopup), GetAllPixelFormats(), mSynthexInfo.mPixelFormat);
}

void Dialog::InitPixelAspectPopup() {
    FillPopup(*Get(kPixelAspectPopup), GetAllPixelAspects(), mSynthexInfo.mFramePAR);
}

void Dialog::InitSaveAsData() {
    if (mSynthexInfo.mSavedFilePath.empty()) {
        Get(kSaveFileButton)->SetDisabled(true);
        return;
    }
    Get(kSaveToPathText)->SetValue(mSynthexInfo.mSavedFilePath);
    // Deliberate: settings that have a file already stay bound to it for this dialog.
    const auto box = Get(kUseAsCustomImporter);
    box->SetChecked(true);
    box->SetDisabled(true);
}
