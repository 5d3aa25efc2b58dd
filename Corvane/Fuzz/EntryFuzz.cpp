// Sought: a sequence of selectors with any bytes in their records that crashes the importer, or makes it read
// or write beside a record. Each record is a block of its own, so that the sanitizer sees what lies beside
// it.
#include <cstring>
#include <memory>

#include <fuzzer/FuzzedDataProvider.h>

#include "Engine/PluginLibrary.h"
#include "Require.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/TestHooks.h"
#include "Services/UI/ScriptedPlatform.h"
#include "Tests/TestFolder.h"

using namespace corvane;

/// A record that holds the bytes, or as many of them as it has room for.
template <class Record>
static std::unique_ptr<Record> Filled(const std::string& bytes) {
    auto record = std::make_unique<Record>();
    std::memcpy(record.get(), bytes.data(), std::min(bytes.size(), sizeof(Record)));
    return record;
}

/// Sends a selector, and keeps in `instance` what the importer has made.
static void Send(const PluginLibrary& library, FuzzedDataProvider& data, const char16_t* path,
                 const std::string& text, void*& instance) {
    const auto selector = data.ConsumeIntegralInRange<std::int32_t>(-1, kSelector_Last + 1);
    const std::string bytes = data.ConsumeBytesAsString(data.ConsumeIntegralInRange<std::size_t>(0, 800));
    const auto access = Filled<imFileAccessRec8>(bytes);
    const auto info = Filled<imFileInfoRec8>(bytes);
    const auto prefs = Filled<imGetPrefsRec>(bytes);
    const auto opened = Filled<imFileOpenRec8>(bytes);
    const auto video = Filled<imSourceVideoRec>(bytes);
    const auto any = Filled<imIndFormatRec>(bytes); // begins with the instance where a record has one
    const auto buffer = std::make_unique<char[]>(kPrefsBufferSize);
    text.copy(buffer.get(), kPrefsBufferSize - 1);
    CvVexelHandle frame = nullptr;
    access->mFilePath = opened->mFilePath = path;
    access->mNewFilePath = nullptr;
    info->mPrefs = data.ConsumeBool() ? text.c_str() : nullptr;
    prefs->mPrefs = data.ConsumeBool() ? buffer.get() : nullptr;
    info->mPrivateData = opened->mPrivateData = video->mPrivateData = instance;
    video->mFrame = &frame;
    std::memcpy(any.get(), &instance, sizeof instance);
    const auto call = [&](void* param1, void* param2) { library.Call(selector, param1, param2); };
    switch (selector) {
    case kSelector_CloseFile: call(nullptr, std::exchange(instance, nullptr)); break;
    case kSelector_GetInfo8:
        call(access.get(), info.get());
        instance = info->mPrivateData;
        break;
    case kSelector_GetPrefs: call(access.get(), prefs.get()); break;
    case kSelector_OpenFile8:
        call(nullptr, opened.get());
        instance = opened->mPrivateData;
        break;
    case kSelector_GetSourceVideo: call(nullptr, video.get()); break;
    case kSelector_GetIndFormat:
    case kSelector_GetIndPixelFormat: call(reinterpret_cast<void*>(bytes.size() % 3), any.get()); break;
    default: call(any.get(), any.get()); break;
    }
    if (frame != nullptr) VexelSuite()->Dispose(frame);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const PluginLibrary library(SYNTHEX_BUILD_DIR "/lib/ImporterSynthex.bundle");
    static const corvane::testing::TestFolder folder;
    SetFrameLimits(64, 1 << 20);
    FuzzedDataProvider data(bytes, size);
    ScriptedPlatform platform({.actions = {}, .answers = {}, .cancel = data.ConsumeBool()});
    const ScopedPlatform scope(platform);
    const std::string text = data.ConsumeRandomLengthString(4000);
    const std::u16string path = Mosk::FromUTF8(folder.Write("it.synthex", text).string());
    void* instance = nullptr;
    while (data.remaining_bytes() > 0)
        Send(library, data,
             data.PickValueInArray({path.c_str(), u"/none", static_cast<const char16_t*>(nullptr)}), text,
             instance);
    library.Call(kSelector_CloseFile, nullptr, instance);
    Require(GetFrameStatistics().liveFrames == 0);
    return 0;
}
