#include "ImporterSynthex.h"

#include <cstring>
#include <exception>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace {

constexpr std::uint32_t kFileType = 'S' << 24 | 'Y' << 16 | 'N' << 8 | 'X';
constexpr std::uint32_t kFormatFlags = 0xE008;
constexpr char kFormatName[] = "Synthex";
constexpr char kFileExtension[] = "synthex";

constinit Mosk::ObjectPtr<Mosk::Module, Mosk::AtomicValue> gDllModule;

/// What stands in for the module before there is one: a null reference can't. Not a static of the entry: the
/// guard of that is a lock, and the entry takes none.
constinit const Mosk::ResourceCollection kNoResources;

/// The pointer that a record begins with; packed records need not be aligned.
void* FirstField(const void* record) {
    void* field = nullptr;
    if (record != nullptr) std::memcpy(&field, record, sizeof field);
    return field;
}

/// The answer to selectors that need an instance and are not supported even with one.
int UnsupportedOn(const void* record) {
    return FirstField(record) == nullptr ? kResult_NoInstance : kResult_Unsupported;
}

// Guarding.

/// Which kinds of exceptions are no longer reported.
struct ReportDisabled {
    bool standard = false;
    bool unknown = false;
};

/// Runs calls into the importer so that no exception leaves them.
class Guard {
  public:
    Guard(int selector, ReportDisabled& disabled) : mSelector(selector), mDisabled(disabled) {}

    /// `importMod` is the instance, or null if the selector has none. `prepared` is the result after an
    /// exception.
    template <class Function>
    int Call(const void* importMod, int prepared, Function function) const {
        try {
            return function();
        } catch (const std::exception& exception) {
            if (mDisabled.standard) return prepared;
            std::ostringstream message = Message(importMod, " Threw an EXCEPTION during ");
            // A null text puts the stream into its fail state, and the message ends there.
            message << ". what() returned " << exception.what();
            message << std::endl;
            if (Mosk::ThrowAfterUnhandledExceptionAlert(mDisabled.standard, message.str())) throw;
            return prepared;
        } catch (...) {
            if (mDisabled.unknown) return prepared;
            std::ostringstream message = Message(importMod, " Threw an unknown EXCEPTION during ");
            message << std::endl;
            if (Mosk::ThrowAfterUnhandledExceptionAlert(mDisabled.unknown, message.str())) throw;
            return prepared;
        }
    }

  private:
    /// Deliberate: the pieces end and begin with blanks, so that there are two where they meet.
    std::ostringstream Message(const void* importMod, const char* what) const {
        std::ostringstream message;
        const auto lowBits = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(importMod));
        message << "plugin.CvImportModule "
                << " importmod"
                << ":"
                << "0x" << std::hex << lowBits << std::dec;
        message << what << " selector"
                << ":" << mSelector;
        return message;
    }

    int mSelector;
    ReportDisabled& mDisabled;
};

// Selectors that are more than one call.

int CloseFile(void* instance) {
    if (instance == nullptr) return kResult_Unsupported;
    delete static_cast<ImporterSynthex*>(instance);
    return kResult_Success;
}

int GetIndPixelFormat(const void* index, imIndPixelFormatRec* record) {
    if (record->mPrivateData == nullptr) return kResult_NoInstance;
    CvPixelFormat format = 0;
    const int result = ImporterSynthex::GetIndexPixelFormat(
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(index)), format);
    // The record of an index that is not in the list may be one that can't be written.
    if (result == kResult_Success) record->mPixelFormat = format;
    return result;
}

// Deliberate: if the call on a new instance throws, here and in `OpenFile`, the instance is neither stored
// nor destroyed.
int GetInfo(imStdParms* stdParms, const imFileAccessRec8* access, imFileInfoRec8* info) {
    if (auto* const instance = static_cast<ImporterSynthex*>(info->mPrivateData))
        return instance->OnGetInfo8(access, info);
    ImporterSynthex* const created = ImporterSynthex::CreateImportModuleInstance(stdParms);
    const int result = created == nullptr ? kResult_InstanceNotCreated : created->OnGetInfo8(access, info);
    info->mPrivateData = created;
    return result;
}

int OpenFile(imStdParms* stdParms, imFileOpenRec8* record) {
    if (auto* const instance = static_cast<ImporterSynthex*>(record->mPrivateData))
        return instance->OnOpenFile8(record);
    ImporterSynthex* created = ImporterSynthex::CreateImportModuleInstance(stdParms);
    const int result = created == nullptr ? kResult_InstanceNotCreated : created->OnOpenFile8(record);
    if (result == kResult_FileUnreadable) {
        delete created;
        created = nullptr;
    }
    record->mPrivateData = created;
    return result;
}

int PreferredFrameSize(imPreferredFrameSizeRec* record) {
    const auto* const instance = static_cast<const ImporterSynthex*>(record->mPrivateData);
    return instance == nullptr ? kResult_NoInstance : instance->OnPreferredFrameSize(record);
}

int GetSourceVideo(void* unused, imSourceVideoRec* record) {
    const auto* const instance = static_cast<const ImporterSynthex*>(record->mPrivateData);
    return instance->OnGetSourceVideo(unused, record);
}

} // namespace

// Entry.

Mosk::ObjectPtr<Mosk::Module, Mosk::AtomicValue>* GetDllModule() {
    return &gDllModule;
}

extern "C" [[gnu::visibility("default")]] std::int32_t
xImportEntry(std::int32_t selector, imStdParms* stdParms, void* param1, void* param2) {
    if (selector == kSelector_Init)
        if (const CFBundleRef bundle =
                CFBundleGetBundleWithIdentifier(PLATFORM_BUNDLE_ID(SYNTHEX_BUNDLE_IDENTIFIER)))
            Mosk::Module::Create(bundle, gDllModule);

    const Mosk::ResourceCollection& module = gDllModule.mObject ? *gDllModule.mObject : kNoResources;
    const std::int32_t result =
        CvImportModule<ImporterSynthex>::ImportEntry(module, selector, stdParms, param1, param2);
    if (selector == kSelector_Shutdown) gDllModule.Reset();
    return result;
}

template <class Importer>
// NOLINTNEXTLINE(readability-function-size): one case a selector
int CvImportModule<Importer>::ImportEntry(const Mosk::ResourceCollection& module, int selector,
                                          imStdParms* stdParms, void* param1, void* param2) {
    static ReportDisabled sDisabled;
    const Guard guard(selector, sDisabled);
    const int unsupported = kResult_Unsupported;
    const auto index = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(param1));
    auto* const access = static_cast<imFileAccessRec8*>(param1);

    // clang-format off
    switch (selector) {
    case kSelector_Init:              return Importer::Init(static_cast<imImportInfoRec*>(param1));
    case kSelector_Shutdown:          return Importer::ShutDown();
    case kSelector_QuietFile:         return Importer::OnQuietFile(static_cast<void**>(param2));
    case kSelector_CloseFile:         return guard.Call(param2, kResult_Success, [&] {
        return CloseFile(param2); });
    case kSelector_GetIndPixelFormat:
        return GetIndPixelFormat(param1, static_cast<imIndPixelFormatRec*>(param2));
    case kSelector_Query28:           return kResult_Answer28;
    case kSelector_Query36:           return kResult_Answer36;
    case kSelector_GetIndFormat:      return guard.Call(nullptr, unsupported, [&] {
        return Importer::GetIndFormat(module, stdParms, index, static_cast<imIndFormatRec*>(param2)); });
    case kSelector_GetInfo8:          return guard.Call(nullptr, unsupported, [&] {
        return GetInfo(stdParms, access, static_cast<imFileInfoRec8*>(param2)); });
    case kSelector_GetPrefs:          return guard.Call(nullptr, unsupported, [&] {
        return Importer::OnGetPrefs(stdParms, access, static_cast<imGetPrefsRec*>(param2)); });
    case kSelector_OpenFile8:         return guard.Call(nullptr, unsupported, [&] {
        return OpenFile(stdParms, static_cast<imFileOpenRec8*>(param2)); });
    case kSelector_PreferredFrameSize:
        return PreferredFrameSize(static_cast<imPreferredFrameSizeRec*>(param1));
    case kSelector_GetSourceVideo:
        if (FirstField(param2) == nullptr) return kResult_NoInstance;
        return guard.Call(FirstField(param2), unsupported, [&] {
            return GetSourceVideo(param1, static_cast<imSourceVideoRec*>(param2)); });
    // Deliberate: these look at param1 for the instance, ...
    case kSelector_Request46:
    case kSelector_Request56:
    case kSelector_Request59:
    case kSelector_Request60:         return UnsupportedOn(param1);
    // ... and these at param2.
    case kSelector_Request58:
    case kSelector_Request61:
    case kSelector_Request62:
    case kSelector_Request63:
    case kSelector_Request64:         return UnsupportedOn(param2);
    default:                          return kResult_Unsupported;
    }
    // clang-format on
}

template <class Importer>
Importer* CvImportModule<Importer>::CreateImportModuleInstance(imStdParms* stdParms) {
    static bool sDisabled = false;
    try {
        auto* const instance = new Importer;
        instance->SetStdParms(stdParms);
        return instance;
    } catch (const std::exception& exception) {
        if (sDisabled) return nullptr;
        std::ostringstream message;
        message << "<plugin.CvImportModule> An exception occured creating ImportModule "
                << typeid(Importer).name();
        message << " what() returned " << exception.what();
        message << std::endl;
        if (Mosk::ThrowAfterUnhandledExceptionAlert(sDisabled, message.str())) throw;
        return nullptr;
    }
}

template class CvImportModule<ImporterSynthex>;

// Importer.

std::int32_t ImporterSynthex::Init(imImportInfoRec* record) {
    record->mCapability28 = 1;
    record->mCapability32 = 1;
    record->mCapability36 = 1;
    record->mCapability44 = 1;
    record->mCapability52 = 1;
    record->mCapability60 = 1;
    return kResult_Initialized;
}

std::int32_t ImporterSynthex::ShutDown() {
    return kResult_Success;
}

std::int32_t ImporterSynthex::GetIndFormat(const Mosk::ResourceCollection&, imStdParms*, std::uint64_t index,
                                           imIndFormatRec* record) {
    if (index != 0) return kResult_NoSuchIndex;
    record->mFileType = kFileType;
    record->mFlags = kFormatFlags;
    record->mReserved8 = 0;
    std::memcpy(record->mFormatName, kFormatName, sizeof kFormatName);
    std::memcpy(record->mFormatShortName, kFormatName, sizeof kFormatName);
    std::memcpy(record->mPlatformExtension, kFileExtension, sizeof kFileExtension);
    record->mReserved760 = 0;
    return kResult_Success;
}

std::int32_t ImporterSynthex::GetIndexPixelFormat(std::uint64_t index, CvPixelFormat& format) {
    if (index != 0) return kResult_NoSuchIndex;
    format = 0;
    return kResult_Success;
}

std::int32_t ImporterSynthex::OnQuietFile(void**) {
    return kResult_Success;
}

std::int32_t ImporterSynthex::OnCloseFile(void**) {
    return kResult_Success;
}

std::int32_t ImporterSynthex::OnOpenFile8(const imFileOpenRec8* record) {
    const Mosk::Result status = GetSynthexDataFromFile(PathOf(record->mFilePath), mSynthexInfo);
    return status < 0 ? kResult_FileUnreadable : kResult_Success;
}

std::int32_t ImporterSynthex::OnGetInfo8(const imFileAccessRec8* access, imFileInfoRec8* info) {
    info->mHasVideo = 1;
    if (!Mosk::PathUtils::ExistsOnDisk(PathOf(access->mFilePath))) {
        const char* const prefs = info->mPrefs;
        if (prefs == nullptr) return kResult_FileUnreadable;
        mSynthexInfo = lumcore::serialization::Serializer<SynthexInfo>::FromUTF8String(
            reinterpret_cast<const unsigned char*>(prefs), std::strlen(prefs) + 1);
    }

    std::uint32_t scale = 0;
    std::uint32_t sampleSize = 0;
    AcquireSuite<CvLegacySuite2>(mStdParms, kCvLegacySuite, kCvLegacySuiteVersion2)
        ->TicksToRate(mSynthexInfo.mVideoFrameRate.GetTicksPerFrame(), &scale, &sampleSize);
    const auto frames =
        static_cast<std::uint32_t>(mSynthexInfo.mVideoDuration.ToFrame32(mSynthexInfo.mVideoFrameRate));

    info->mDuration = frames * sampleSize;
    info->mScale = scale;
    info->mSampleSize = sampleSize;
    info->mFlag22 = 1;
    info->mDepth = 32;
    info->mFieldType = static_cast<std::uint8_t>(mSynthexInfo.mFieldType);
    info->mWidth = mSynthexInfo.mFrameWidth;
    info->mHeight = mSynthexInfo.mFrameHeight;
    info->mParNumerator = mSynthexInfo.mFramePAR.GetNumerator();
    info->mParDenominator = mSynthexInfo.mFramePAR.GetDenominator();
    info->mFlag54 = 1;
    return kResult_Success;
}

std::int32_t ImporterSynthex::OnPreferredFrameSize(imPreferredFrameSizeRec* record) const {
    if (record->mIndex != 0) return kResult_Unsupported;
    record->mWidth = mSynthexInfo.mFrameWidth;
    record->mHeight = mSynthexInfo.mFrameHeight;
    return kResult_Success;
}

Mosk::String PathOf(const char16_t* path) {
    return path == nullptr ? Mosk::String() : Mosk::String(path);
}

Mosk::Result GetSynthexDataFromFile(const Mosk::String& path, SynthexInfo& info) {
    Mosk::File file;
    if (const Mosk::Result status = file.Open(path, Mosk::FileAccessFlags::kRead); status < 0) return status;
    const auto size = static_cast<std::size_t>(file.SizeOnDisk());
    std::vector<unsigned char> bytes(size + 2, 0); // two zero bytes end the text if the file holds none
    std::uint32_t bytesRead = 0;
    const Mosk::Result status = file.Read(bytes.data(), static_cast<std::uint32_t>(size), bytesRead);
    const std::size_t length = std::strlen(reinterpret_cast<const char*>(bytes.data()));
    info = lumcore::serialization::Serializer<SynthexInfo>::FromUTF8String(bytes.data(), length + 1);
    return status;
}
