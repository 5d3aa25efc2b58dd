/// The importer: the per-clip object, and the template that turns the host's selectors into calls on it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "CvPluginAPI.h"
#include "Mosk.h"
#include "SynthexInfo.h"

/// The base of an importer class. Owns the selector switch, the making of instances, and the rule that no
/// exception reaches the host: each is caught, reported once and turned into a result.
template <class Importer>
class CvImportModule {
  public:
    virtual ~CvImportModule() = default;

    /// Keeps the host's parameters, through which the instance reaches the host's suites. They outlive it.
    virtual void SetStdParms(const imStdParms* stdParms) { mStdParms = stdParms; }

    /// Answers one selector with its result. Throws only if the host asks for the exception. Any thread.
    static int ImportEntry(const Mosk::ResourceCollection& module, int selector, imStdParms* stdParms,
                           void* param1, void* param2);

    /// Makes an instance. Null if that failed and the failure was reported; throws if the host asks for the
    /// exception.
    static Importer* CreateImportModuleInstance(imStdParms* stdParms);

  protected:
    const imStdParms* mStdParms = nullptr;
};

/// One clip.
///
/// The host keeps the instance in the private-data field of its records, from the selector that made it (37
/// or 39) to selector 9. Operations are called by the selector switch only, and return its results.
class ImporterSynthex : public CvImportModule<ImporterSynthex> {
  public:
    /// Says what the importer can do.
    static std::int32_t Init(imImportInfoRec* record);
    /// Has nothing to do.
    static std::int32_t ShutDown();

    /// The one format: "Synthex", extension "synthex". Other indices end the list.
    static std::int32_t GetIndFormat(const Mosk::ResourceCollection& module, imStdParms* stdParms,
                                     std::uint64_t index, imIndFormatRec* record);
    /// The one pixel format: "any". Other indices end the list.
    static std::int32_t GetIndexPixelFormat(std::uint64_t index, CvPixelFormat& format);

    /// Has nothing to do: no file is kept open.
    static std::int32_t OnQuietFile(void** privateData);
    /// Has nothing to do; the selector switch destroys the instance.
    static std::int32_t OnCloseFile(void** privateData);

    /// Reads the settings file that the record names.
    std::int32_t OnOpenFile8(const imFileOpenRec8* record);
    /// Tells what the clip is. A clip without a file takes its settings from the record's preferences data.
    std::int32_t OnGetInfo8(const imFileAccessRec8* access, imFileInfoRec8* info);
    /// The one preferred size, which is the clip's own. Other indices are not supported.
    std::int32_t OnPreferredFrameSize(imPreferredFrameSizeRec* record) const;
    /// Renders one frame into a buffer made through the host's suites.
    std::int32_t OnGetSourceVideo(void* unused, imSourceVideoRec* record) const;

    /// Makes or edits the preferences data of a clip. Works without an instance.
    static std::int32_t OnGetPrefs(imStdParms* stdParms, imFileAccessRec8* access, imGetPrefsRec* prefs);

  private:
    SynthexInfo mSynthexInfo;
};

/// The path that a record holds. A null pointer names no file, and neither does the empty path that is
/// returned for it.
Mosk::String PathOf(const char16_t* path);

/// Reads a settings file into `info`. Returns the file status, negative if the file can't be read. A file
/// that does not decode throws what `Serializer<SynthexInfo>` throws; `info` is unchanged then.
Mosk::Result GetSynthexDataFromFile(const Mosk::String& path, SynthexInfo& info);

/// Gets a suite through the host's basic suite. The status is not looked at, and the suite is not given back.
/// A host that lacks the suite is reported as `std::runtime_error`, not called through a null pointer.
template <class Suite>
const Suite* AcquireSuite(const imStdParms* stdParms, const char* name, std::int32_t version) {
    const void* suite = nullptr;
    stdParms->mBasicSuite->AcquireSuite(name, version, &suite);
    if (suite == nullptr) throw std::runtime_error(std::string("The host has no ") + name);
    return static_cast<const Suite*>(suite);
}

/// The process-wide module object, empty until selector 0. Only selectors 0 and 1 change it.
Mosk::ObjectPtr<Mosk::Module, Mosk::AtomicValue>* GetDllModule();
