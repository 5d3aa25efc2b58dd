#include <cstring>
#include <string>

#include "ImporterSynthex.h"

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

} // namespace

std::int32_t ImporterSynthex::OnGetPrefs(imStdParms* stdParms, imFileAccessRec8* access, imGetPrefsRec* prefs) {
    const Mosk::String path = access->mFilePath;
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
    if (showDialog) return kResult_Unsupported; // no dialog yet
    WritePrefs(info, prefs);
    return kResult_Success;
}
