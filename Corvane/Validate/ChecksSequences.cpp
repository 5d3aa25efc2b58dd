#include <cstring>
#include <utility>

#include "RandomSequence.h"

namespace corvane {

void RandomSequence::Make() {
    static constexpr void (RandomSequence::*kRequests[])() = {
        &RandomSequence::Initialize,  &RandomSequence::ShutDown,     &RandomSequence::AskWithoutRecord,
        &RandomSequence::CloseFile,   &RandomSequence::AskForFormat, &RandomSequence::AskUnsupported,
        &RandomSequence::AskForSize,  &RandomSequence::AskForPrefs,  &RandomSequence::AskForPixelFormat,
        &RandomSequence::AskForInfo,  &RandomSequence::AskForInfo,   &RandomSequence::OpenFile,
        &RandomSequence::AskForFrame, &RandomSequence::AskForFrame,  &RandomSequence::OpenFile,
    };
    const auto requests = 1 + static_cast<int>(mRandom.Below(15));
    for (; mRequest < requests && mRun.WhyFailed().empty(); ++mRequest) (this->*mRandom.Of(kRequests))();
}

RandomSequence::Path RandomSequence::AnyPath() {
    static constexpr const char16_t* kNoFiles[] = {nullptr, u"", u"/", kMissingPath};
    if (mRandom.OneIn(3)) return {mRandom.Of(kNoFiles), nullptr};
    const std::size_t file = mRandom.Below(mFiles.size());
    return {mFiles[file].Path(), &mTexts[file]};
}

/// Puts a text where whoever reads behind its terminating zero ends the process.
const char* RandomSequence::PlaceText(const SettingsBytes& text) {
    const std::size_t size = std::strlen(text.bytes.c_str()) + 1;
    std::byte* const placed = mMemory.text.Place(size, true);
    std::memcpy(placed, text.bytes.c_str(), size);
    return reinterpret_cast<const char*>(placed);
}

void RandomSequence::TakeNew(void* pointer, const ClipSettings& settings) {
    if (pointer == nullptr) return mRun.Fail("no instance is left in the record");
    mInstances.push_back({pointer, settings});
}

void RandomSequence::Initialize() {
    Sent<imImportInfoRec> record(mMemory.first, mRandom);
    record.Arm();
    imImportInfoRec& to = record.To();
    to.mCapability28 = to.mCapability32 = to.mCapability36 = 1;
    to.mCapability44 = to.mCapability52 = to.mCapability60 = 1;
    Send(kSelector_Init, record.Get(), Wild(), {kResult_Initialized}, record);
    Compare(record);
}

void RandomSequence::ShutDown() {
    Send(kSelector_Shutdown, Wild(), Wild(), {});
}

/// Selectors that look at nothing, and those that there are not.
void RandomSequence::AskWithoutRecord() {
    static constexpr std::pair<std::int32_t, std::int32_t> kAnswered[] = {
        {kSelector_QuietFile, kResult_Success},
        {kSelector_Query28, kResult_Answer28},
        {kSelector_Query36, kResult_Answer36},
    };
    static constexpr std::int32_t kUnsupported[] = {
        -2147483647, -1, 2,  3,  4,  5,  6,  7,  10, 11, 12, 13,  15,    16,        26,
        29,          35, 40, 44, 48, 55, 57, 65, 66, 67, 68, 255, 65536, 2147483647};
    const auto [selector, result] =
        mRandom.OneIn(2) ? mRandom.Of(kAnswered) : std::pair(mRandom.Of(kUnsupported), +kResult_Unsupported);
    Send(selector, Wild(), Wild(), {result});
}

/// Selectors that look whether there is an instance, in the record of one parameter only.
void RandomSequence::AskUnsupported() {
    static constexpr std::int32_t kInFirst[] = {kSelector_Request46, kSelector_Request56, kSelector_Request59,
                                                kSelector_Request60};
    static constexpr std::int32_t kInSecond[] = {kSelector_Request58, kSelector_Request61,
                                                 kSelector_Request62, kSelector_Request63,
                                                 kSelector_Request64};
    Sent<void*> record(mMemory.first, mRandom);
    if (mRandom.OneIn(2)) *record.Get() = nullptr;
    record.Arm();
    const Expected expected{*record.Get() == nullptr ? kResult_NoInstance : kResult_Unsupported};
    if (mRandom.OneIn(2))
        Send(mRandom.Of(kInFirst), record.Get(), Wild(), expected, record);
    else
        Send(mRandom.Of(kInSecond), Wild(), record.Get(), expected, record);
}

void RandomSequence::CloseFile() {
    Instance* const instance = AnyInstance();
    if (instance == nullptr) return Send(kSelector_CloseFile, Wild(), nullptr, {kResult_Unsupported});
    void* const pointer = instance->pointer;
    mInstances.erase(mInstances.begin() + (instance - mInstances.data()));
    Send(kSelector_CloseFile, Wild(), pointer, {});
}

void RandomSequence::AskForFormat() {
    Sent<imIndFormatRec> record(mMemory.first, mRandom);
    record.Arm();
    const std::uint64_t index = mRandom.OneIn(2) ? mRandom.Bits() << 32 : mRandom.Bits() | 1;
    const bool isFirst = static_cast<std::uint32_t>(index) == 0;
    if (isFirst) {
        imIndFormatRec& to = record.To();
        to.mFileType = 0x53594E58;
        to.mFlags = 0xE008;
        to.mReserved8 = to.mReserved760 = 0;
        std::memcpy(to.mFormatName, "Synthex", 8);
        std::memcpy(to.mFormatShortName, "Synthex", 8);
        std::memcpy(to.mPlatformExtension, "synthex", 8);
    }
    Send(kSelector_GetIndFormat, reinterpret_cast<void*>(index), record.Get(),
         {isFirst ? kResult_Success : kResult_NoSuchIndex}, record);
    Compare(record);
}

void RandomSequence::AskForPixelFormat() {
    Sent<imIndPixelFormatRec> record(mMemory.first, mRandom);
    if (mRandom.OneIn(3)) record->mPrivateData = nullptr;
    record.Arm();
    const std::uint64_t index = mRandom.OneIn(2) ? mRandom.Bits() << 32 : mRandom.Bits() | 1;
    Expected expected{kResult_NoInstance};
    if (record->mPrivateData != nullptr) {
        expected.result = static_cast<std::uint32_t>(index) == 0 ? kResult_Success : kResult_NoSuchIndex;
        if (expected.result == kResult_Success) record.To().mPixelFormat = 0;
    }
    Send(kSelector_GetIndPixelFormat, reinterpret_cast<void*>(index), record.Get(), expected, record);
    Compare(record);
}

void CheckSequences(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    SequenceMemory memory;
    for (std::uint64_t number = 0; number < run.Sequences() && run.WhyFailed().empty(); ++number)
        RandomSequence(run, bundle, memory, number).Make();
}

} // namespace corvane
