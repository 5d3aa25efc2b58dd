#include "DialogImpl.h"

using Dialog = ImporterSynthexPrefsDialogImpl;
using lumui::dialogs::UI_MessageBox;

/// Writes the settings to a file. The exchange gets them first, with the path and still with the old clip
/// name.
std::int32_t Dialog::SaveFileData(const Mosk::String& path) {
    // Deliberate: a path that can't be written stays recorded.
    mSynthexInfo.mSavedFilePath = path;
    mDataExchange->SetPrefs(mSynthexInfo);
    const std::string text = mDataExchange->SerializeOutSynthexData();

    Mosk::File file;
    const Mosk::Result created =
        file.Create(mSynthexInfo.mSavedFilePath, Mosk::FileAccessFlags::kReadWrite,
                    Mosk::FileShareModeFlags::kShareReadWrite, Mosk::FileCreateDispositionFlags::kReplace,
                    Mosk::FileAttributesFlags::kNormal, false);
    if (created < 0) return created;
    std::uint32_t written = 0;
    const Mosk::Result result = file.Write(text.data(), static_cast<std::uint32_t>(text.size()), written);
    mSynthexInfo.mClipName = Mosk::PathUtils::GetFilePart(mSynthexInfo.mSavedFilePath);
    return result;
}

/// Asks for a path and saves there. 0 if the person cancelled.
std::int32_t Dialog::DisplaySaveSynthexDialog() {
    using namespace lumui::dialogs;
    const std::vector<FileDialogFilterInfo> filters{{u"Synthex Data", u"synthex", u"synthex"}};
    const auto parent = GetView()->GetWindow();
    OS_FileSaveAsDialog dialog(parent.get(), filters, 0, mSynthexInfo.mClipName,
                               lumcore::utility::Flags<unsigned int>(kFileDialog_ConfirmReplace));
    dialog.RunModal();
    if (dialog.GetOutcome() != kFileDialogOutcome_Confirmed) return 0;

    const Mosk::String path = dialog.GetChosenFile().FullPath();
    const Mosk::Result result = SaveFileData(path);
    if (result >= 0) {
        const auto text = Get(kSaveToPathText);
        text->SetValue(path);
        text->SetTruncation(lumui::controls::TextTruncation::kMiddle);
        mSynthexInfo.mSavedFilePath = path;
    }
    return result;
}

void Dialog::SaveToPathButtonChanged(Message*) {
    Mosk::Result result = DisplaySaveSynthexDialog();
    while (result < 0) {
        UI_MessageBox box(GetDrawSupplier(), u"Error saving file",
                          u"There was a problem saving the file. Choose another path?",
                          UI_MessageBox::kButton_Yes | UI_MessageBox::kButton_No, UI_MessageBox::kButton_Yes,
                          UI_MessageBox::kIcon_Warning, GetView().get(), 0, 0.0f, 0.0f, {});
        box.RunModal();
        if (box.GetResponse() != UI_MessageBox::kButton_Yes) return;
        result = DisplaySaveSynthexDialog();
    }
    const Mosk::String& path = mSynthexInfo.mSavedFilePath;
    if (!path.empty() && Mosk::PathUtils::ExistsOnDisk(path)) Get(kSaveFileButton)->SetDisabled(false);
}

void Dialog::SaveButtonChanged(Message*) {
    if (mSynthexInfo.mSavedFilePath.empty()) SaveToPathButtonChanged(nullptr);
    if (mSynthexInfo.mSavedFilePath.empty()) return;
    // Deliberate: no question if this fails, unlike with a new path.
    SaveFileData(mSynthexInfo.mSavedFilePath);
}

void Dialog::UseAsCustomImporterChanged(Message*) {
    const auto box = Get(kUseAsCustomImporter);
    bool checked = box->IsChecked();
    if (checked) {
        if (mSynthexInfo.mSavedFilePath.empty()) SaveToPathButtonChanged(nullptr);
        if (mSynthexInfo.mSavedFilePath.empty()) {
            box->SetChecked(false);
            checked = false;
        } else {
            // Deliberate: a path that was chosen just now is written a second time.
            SaveFileData(mSynthexInfo.mSavedFilePath);
        }
    }
    mDataExchange->SetUseSavedFrameFileAsSource(checked);
}
