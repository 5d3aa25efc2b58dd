#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "CheckedRecord.h"
#include "ChecksShared.h"
#include "lumcore.h"

namespace corvane {

namespace {

/// A preferences request: its two records and its buffer. The buffer holds undefined bytes at first.
struct PrefsRequest {
    PrefsRequest(const char16_t* path, bool firstTime) : buffer(kPrefsBufferSize) {
        access->mFilePath = path;
        prefs->mPrefs = reinterpret_cast<char*>(buffer.Data());
        prefs->mFirstTime = firstTime;
        Arm();
    }

    void Arm() {
        access.Arm();
        prefs.Arm();
        buffer.Arm();
    }
    Answer Send(const Bundle& bundle) { return bundle.Call(kSelector_GetPrefs, access.Get(), prefs.Get()); }
    const char* Text() { return prefs->mPrefs; }

    CheckedRecord<imFileAccessRec8> access;
    CheckedRecord<imGetPrefsRec> prefs;
    CheckedMemory buffer;
};

/// The text in the form in which the host's core services write it; empty if it is not well-formed.
std::string Canonical(std::string_view text) {
    using namespace lumcore::serialization;
    const ValuePtr tree = JSONParse(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    return tree ? GetJSONUTF8String(*tree, false) : std::string();
}

/// Compares the preferences of a file that holds `fileText` with what the plug-in is to write.
void ExpectSettings(CheckRun& run, const Bundle& bundle, const std::string& fileText,
                    const std::string& wanted) {
    const MemoryFile file(fileText);
    PrefsRequest request(file.Path(), true);
    run.Expect("the result", request.Send(bundle).result, +kResult_Success);
    run.Expect<std::int32_t>("the size", request.prefs->mPrefsLength, kPrefsBufferSize);
    run.FailIf(request.prefs.Touched({CV_RECORD_FIELD(imGetPrefsRec, mPrefsLength)}));
    run.FailIf(request.access.Touched());
    const std::size_t length = ::strnlen(request.Text(), kPrefsBufferSize);
    if (length == kPrefsBufferSize) return run.Fail("the text does not end with a zero byte");
    const RecordField text{"text", 0, length + 1};
    run.FailIf(request.buffer.Touched({text}));
    if (Canonical({request.Text(), length}) != Canonical(wanted))
        run.Fail(fmt::format("the text is {} instead of {}", request.Text(), wanted));
}

} // namespace

void CheckPrefsSize(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const MemoryFile file(WriteSettings(kCheckSettings));
    for (const bool firstTime : {false, true}) {
        for (const char16_t* const path : {file.Path(), kMissingPath}) {
            PrefsRequest request(path, firstTime);
            request.prefs->mPrefs = nullptr;
            request.Arm();
            run.Doing("asking for the size of the preferences");
            run.Expect("the result", request.Send(bundle).result, +kResult_Success);
            run.Expect<std::int32_t>("the size", request.prefs->mPrefsLength, kPrefsBufferSize);
            run.FailIf(request.prefs.Touched({CV_RECORD_FIELD(imGetPrefsRec, mPrefsLength)}));
            run.FailIf(request.access.Touched());
        }
    }
}

void CheckPrefsOfFile(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const std::string text =
        WriteSettings(With(&ClipSettings::fieldType, 1, With(&ClipSettings::renderFormat, 1u)));
    run.Doing("asking for the preferences of a file");
    ExpectSettings(run, bundle, text, text);
    run.Doing("asking for the preferences of a wrapped document");
    ExpectSettings(run, bundle,
                   fmt::format(R"({{"SerializerWrappedObject":{},"mFrameWidth":"beside"}})", text), text);
    run.Doing("asking for the preferences of a file with bytes after a zero byte");
    ExpectSettings(run, bundle, text + '\0' + "{ not settings", text);
    run.Doing("asking for the preferences of a file of an empty object");
    ExpectSettings(run, bundle, "{}", WriteSettings({}));
}

void CheckMalformedPrefs(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    for (const MalformedText& malformed : kMalformedTexts) {
        const MemoryFile file(malformed.text);
        PrefsRequest request(file.Path(), true);
        run.Doing(fmt::format("asking for the preferences of {}", malformed.what));
        run.FailIf(WrongRefusal(request.Send(bundle)));
        run.FailIf(request.prefs.Touched());
        run.FailIf(request.buffer.Touched());

        CheckedRecord<imFileAccessRec8> access;
        access->mFilePath = kMissingPath;
        CheckedRecord<imFileInfoRec8> info;
        const CheckedInstance instance(bundle, kCheckSettings);
        info->mPrivateData = instance.Get();
        info->mPrefs = malformed.text;
        info.Arm();
        run.Doing(fmt::format("asking for information with preferences of {}", malformed.what));
        run.FailIf(WrongRefusal(bundle.Call(kSelector_GetInfo8, access.Get(), info.Get())));
        run.FailIf(info.Touched({CV_RECORD_FIELD(imFileInfoRec8, mHasVideo)}));
    }
}

} // namespace corvane
