#include "DataExchange.h"

#include <cstring>

#include "lumcore.h"

const CFUUIDBytes& GuidOf(const IImporterSynthexPrefsDialogDataExchange*) {
    static constexpr CFUUIDBytes kIdentifier{0x51, 0x3E, 0xBD, 0xA4, 0x56, 0x8E, 0x46, 0x3F,
                                             0xAD, 0xC7, 0x94, 0x3C, 0xA3, 0xA6, 0x19, 0x23};
    return kIdentifier;
}

ImporterSynthexPrefsDialogDataExchange::Owner ImporterSynthexPrefsDialogDataExchange::Create() {
    return Owner(new ImporterSynthexPrefsDialogDataExchange);
}

std::int32_t ImporterSynthexPrefsDialogDataExchange::AddRef() noexcept {
    return OSAtomicAdd32Barrier(1, &mRefCount);
}

std::int32_t ImporterSynthexPrefsDialogDataExchange::Release() noexcept {
    const std::int32_t references = OSAtomicAdd32Barrier(-1, &mRefCount);
    if (references == 0) delete this;
    return references;
}

Mosk::Result ImporterSynthexPrefsDialogDataExchange::QueryMap(const CFUUIDBytes& identifier, void** out) {
    auto* const exchange = static_cast<IImporterSynthexPrefsDialogDataExchange*>(this);
    const bool known = std::memcmp(&identifier, &GuidOf(exchange), sizeof identifier) == 0;
    *out = known ? exchange : nullptr;
    return known ? Mosk::kResult_OK : Mosk::kResult_NoInterface;
}

void ImporterSynthexPrefsDialogDataExchange::SetPrefs(const SynthexInfo& info) {
    mPrefs = info;
    mUserCancelled = false;
}

std::string ImporterSynthexPrefsDialogDataExchange::SerializeOutSynthexData() {
    using namespace lumcore::serialization;
    return GetJSONUTF8String(JSONConvert<SynthexInfo>::ToJSON(mPrefs), false);
}
