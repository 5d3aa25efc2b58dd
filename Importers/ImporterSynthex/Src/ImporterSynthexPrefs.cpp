#include "ImporterSynthexPrefs.h"

#include <cstring>
#include <new>
#include <string>

#include "ImporterSynthex.h"
#include "ImporterSynthexPrefsDialog/DataExchange.h"
#include "ImporterSynthexPrefsDialog/ImporterSynthexPrefsDialog.h"

namespace {

/// Deliberate: one byte short of the buffer, the terminating zero included.
constexpr std::size_t kLongestPrefs = kPrefsBufferSize - 1;

/// The host sequence's frame size, aspect and rate; all else at its defaults.
SynthexInfo FromSequence(const imStdParms* stdParms, const imGetPrefsRec* prefs) {
    std::int64_t ticksPerFrame = 0;
    AcquireSuite<CvLegacySuite1>(stdParms, kCvLegacySuite, kCvLegacySuiteVersion1)
        ->RateToTicks(prefs->mSequenceScale, prefs->mSequenceSampleSize, &ticksPerFrame);
    SynthexInfo info;
    info.mFrameWidth = prefs->mSequenceWidth;
    info.mFrameHeight = prefs->mSequenceHeight;
    info.mFramePAR = {prefs->mSequenceParNumerator, prefs->mSequenceParDenominator};
    info.mVideoFrameRate = lummediatypes::FrameRate(ticksPerFrame);
    return info;
}

/// Stores the settings as zero-terminated text. A text that does not fit is not stored, silently.
void WritePrefs(const SynthexInfo& info, imGetPrefsRec* prefs) {
    using namespace lumcore::serialization;
    const std::string text = GetJSONUTF8String(JSONConvert<SynthexInfo>::ToJSON(info), false);
    if (text.size() + 1 > kLongestPrefs) return;
    std::memcpy(prefs->mPrefs, text.c_str(), text.size() + 1);
    prefs->mPrefsLength = kPrefsBufferSize;
}

/// Hands the path of the saved file to the host, in a block of the host's memory.
///
/// Deliberate: the block has as many bytes as the path has code units, plus one, so it holds the first half
/// of the UTF-16 text only.
void HandOverPath(const imStdParms* stdParms, const Mosk::String& path, imFileAccessRec8* access) {
    const auto size = static_cast<std::uint32_t>(path.size() + 1);
    void* const block = stdParms->mMemoryFunctions->Allocate(size);
    if (block == nullptr) throw std::bad_alloc();
    std::memcpy(block, path.c_str(), size);
    access->mNewFilePath = static_cast<char16_t*>(block);
}

/// Lets the person edit the settings. They stay as they are after a cancel, and if the saved file is to be
/// used.
std::int32_t EditPrefs(const imStdParms* stdParms, imFileAccessRec8* access, SynthexInfo& info) {
    const auto exchange = ImporterSynthexPrefsDialogDataExchange::Create();
    exchange->SetPrefs(info);
    HandleImporterSynthexPrefsDialog(kImporterSynthexPrefsDialogID,
                                     Mosk::MoskUnknownRef(exchange->GetMoskUnknown()), GetDrawSupplier(),
                                     GetTopLevelMenu());
    if (exchange->WasCancelled()) return kResult_Cancelled;
    SynthexInfo edited;
    exchange->GetPrefs(edited);
    if (exchange->UsesSavedFrameFileAsSource()) {
        HandOverPath(stdParms, edited.mSavedFilePath, access);
        return kResult_UseSavedFile;
    }
    info = edited;
    return kResult_Success;
}

} // namespace

lumworkspace::workspace::TopLevelWindow* GetTopLevelMenu() {
    return lumworkspace::workspace::WorkspaceUtils::FindMainTopLevelWindow();
}

const lumui::drawbot::SupplierInterface* GetDrawSupplier() {
    return lumui::ui::UI_NodeManager::Get(false)->GetDefaultDrawSupplier();
}

lumworkspace::workspace::Workspace* GetWorkspace() {
    auto* const window = GetTopLevelMenu();
    return window ? window->GetWorkspace() : nullptr;
}

std::int32_t ImporterSynthex::OnGetPrefs(imStdParms* stdParms, imFileAccessRec8* access,
                                         imGetPrefsRec* prefs) {
    const Mosk::String path = PathOf(access->mFilePath);
    const bool exists = Mosk::PathUtils::ExistsOnDisk(path);
    const bool showDialog = !exists || prefs->mFirstTime == 0;
    if (prefs->mPrefs == nullptr) {
        prefs->mPrefsLength = kPrefsBufferSize;
        return kResult_Success;
    }

    SynthexInfo info;
    if (exists) {
        if (GetSynthexDataFromFile(path, info) < 0) return kResult_FileUnreadable;
    } else if (prefs->mFirstTime != 0) {
        info = FromSequence(stdParms, prefs);
    } else {
        const char* const text = prefs->mPrefs;
        info = lumcore::serialization::Serializer<SynthexInfo>::FromUTF8String(
            reinterpret_cast<const unsigned char*>(text), std::strlen(text) + 1);
    }
    std::int32_t result = kResult_Success;
    if (showDialog) result = EditPrefs(stdParms, access, info);
    if (result != kResult_UseSavedFile) WritePrefs(info, prefs);
    return result;
}
