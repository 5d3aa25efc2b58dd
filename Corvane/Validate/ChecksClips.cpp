#include <utility>

#include <fmt/format.h>

#include "CheckedRecord.h"
#include "ChecksShared.h"

namespace corvane {

namespace {

/// The fields that clip information writes.
constexpr std::initializer_list<RecordField> kInfoFields = {
    CV_RECORD_FIELD(imFileInfoRec8, mHasVideo),     CV_RECORD_FIELD(imFileInfoRec8, mWidth),
    CV_RECORD_FIELD(imFileInfoRec8, mHeight),       CV_RECORD_FIELD(imFileInfoRec8, mDepth),
    CV_RECORD_FIELD(imFileInfoRec8, mFieldType),    CV_RECORD_FIELD(imFileInfoRec8, mFlag22),
    CV_RECORD_FIELD(imFileInfoRec8, mParNumerator), CV_RECORD_FIELD(imFileInfoRec8, mParDenominator),
    CV_RECORD_FIELD(imFileInfoRec8, mFlag54),       CV_RECORD_FIELD(imFileInfoRec8, mScale),
    CV_RECORD_FIELD(imFileInfoRec8, mSampleSize),   CV_RECORD_FIELD(imFileInfoRec8, mDuration),
    CV_RECORD_FIELD(imFileInfoRec8, mPrivateData),
};

/// A record that asks about the clip at `path`.
CheckedRecord<imFileAccessRec8> AccessTo(const char16_t* path) {
    CheckedRecord<imFileAccessRec8> access;
    access->mFilePath = path;
    access.Arm();
    return access;
}

/// Compares what a plug-in says of the clip of `settings`, whose rate is 30000/1001.
void ExpectInfo(CheckRun& run, const imFileInfoRec8& info, const ClipSettings& settings) {
    const struct {
        const char* what;
        std::int64_t found, wanted;
    } kRows[] = {
        {"the flag for video", info.mHasVideo, 1},
        {"the width", info.mWidth, settings.size.width},
        {"the height", info.mHeight, settings.size.height},
        {"the depth", info.mDepth, 32},
        {"the field type", info.mFieldType, settings.fieldType},
        {"the flag at byte 22", info.mFlag22, 1},
        {"the pixel aspect's numerator", info.mParNumerator, settings.aspect.numerator},
        {"the pixel aspect's denominator", info.mParDenominator, settings.aspect.denominator},
        {"the flag at byte 54", info.mFlag54, 1},
        {"the rate's scale", info.mScale, 30000},
        {"the rate's sample size", info.mSampleSize, 1001},
        {"the duration", info.mDuration, settings.durationTicks / settings.ticksPerFrame * 1001},
    };
    for (const auto& [what, found, wanted] : kRows) run.Expect(what, found, wanted);
}

/// Asks for clip information in `info` and compares what comes.
void AskForInfo(CheckRun& run, const Bundle& bundle, const char16_t* path,
                CheckedRecord<imFileInfoRec8>& info, const ClipSettings& settings) {
    CheckedRecord<imFileAccessRec8> access = AccessTo(path);
    Ask(run, bundle, kSelector_GetInfo8, access.Get(), info, kResult_Success, kInfoFields);
    ExpectInfo(run, *info.Get(), settings);
    run.FailIf(access.Touched());
}

} // namespace

void CheckOpenAndClose(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const MemoryFile file(WriteSettings(kCheckSettings));
    CheckedRecord<imFileOpenRec8> record;
    record->mFilePath = file.Path();
    record->mPrivateData = nullptr;
    run.Doing("opening a settings file");
    Ask(run, bundle, kSelector_OpenFile8, nullptr, record, kResult_Success,
        {CV_RECORD_FIELD(imFileOpenRec8, mPrivateData)});
    void* const instance = record->mPrivateData;
    if (instance == nullptr) return run.Fail("no instance is left in the record");

    run.Doing("opening the file again with its instance");
    Ask(run, bundle, kSelector_OpenFile8, nullptr, record, kResult_Success);
    run.Doing("quieting the file");
    run.Expect("the result", bundle.Call(kSelector_QuietFile, nullptr, &record->mPrivateData).result,
               +kResult_Success);
    run.Doing("closing the file");
    run.Expect("the result", bundle.Call(kSelector_CloseFile, nullptr, instance).result, +kResult_Success);
}

void CheckMissingFile(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    CheckedRecord<imFileOpenRec8> record;
    record->mFilePath = kMissingPath;
    record->mPrivateData = nullptr;
    run.Doing("opening a file that does not exist");
    Ask(run, bundle, kSelector_OpenFile8, nullptr, record, kResult_FileUnreadable);

    CheckedInstance instance(bundle, kCheckSettings);
    record->mPrivateData = instance.Get();
    run.Doing("opening a file that does not exist with an instance");
    Ask(run, bundle, kSelector_OpenFile8, nullptr, record, kResult_FileUnreadable);
}

void CheckMalformedFile(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    // With an instance, too: on a new one the contract lets the instance go.
    const CheckedInstance instance(bundle, kCheckSettings);
    for (const MalformedText& malformed : kMalformedTexts) {
        for (void* const given : {static_cast<void*>(nullptr), instance.Get()}) {
            const MemoryFile file(malformed.text);
            CheckedRecord<imFileOpenRec8> record;
            record->mFilePath = file.Path();
            record->mPrivateData = given;
            record.Arm();
            run.Doing(fmt::format("opening a file of {}", malformed.what));
            run.FailIf(WrongRefusal(bundle.Call(kSelector_OpenFile8, nullptr, record.Get())));
            run.FailIf(record.Touched());
        }
    }
    run.Doing("asking for information after malformed files");
    const MemoryFile file(WriteSettings(kCheckSettings));
    CheckedRecord<imFileInfoRec8> info;
    info->mPrivateData = instance.Get();
    info->mPrefs = nullptr;
    AskForInfo(run, bundle, file.Path(), info, kCheckSettings);
}

void CheckInfoOfFile(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    for (const std::int32_t fieldType : {0, 1, 2}) {
        const ClipSettings settings = With(&ClipSettings::fieldType, fieldType);
        const CheckedInstance instance(bundle, settings);
        const MemoryFile file(WriteSettings(settings));
        CheckedRecord<imFileInfoRec8> info;
        info->mPrivateData = instance.Get();
        info->mPrefs = "not to be read while the file exists";
        run.Doing(fmt::format("asking for information about a file of field type {}", fieldType));
        AskForInfo(run, bundle, file.Path(), info, settings);
        if (info->mPrivateData != instance.Get()) run.Fail("the record holds another instance");
    }
}

void CheckInfoOfPrefs(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const ClipSettings settings = With(&ClipSettings::fieldType, 2, With(&ClipSettings::size, {64, 48}));
    const std::string prefs = WriteSettings(settings);
    CheckedRecord<imFileInfoRec8> info;
    info->mPrivateData = nullptr;
    info->mPrefs = prefs.c_str();
    run.Doing("asking for information about a clip without a file");
    AskForInfo(run, bundle, kMissingPath, info, settings);
    if (info->mPrivateData == nullptr) return run.Fail("no instance is left in the record");
    bundle.Call(kSelector_CloseFile, nullptr, info->mPrivateData);

    CheckedRecord<imFileInfoRec8> empty;
    empty->mPrivateData = nullptr;
    empty->mPrefs = nullptr;
    empty.Arm();
    run.Doing("asking for information without a file and without preferences");
    CheckedRecord<imFileAccessRec8> access = AccessTo(kMissingPath);
    run.Expect("the result", bundle.Call(kSelector_GetInfo8, access.Get(), empty.Get()).result,
               +kResult_FileUnreadable);
    run.Expect<std::uint32_t>("the flag for video", empty->mHasVideo, 1);
    run.FailIf(empty.Touched(
        {CV_RECORD_FIELD(imFileInfoRec8, mHasVideo), CV_RECORD_FIELD(imFileInfoRec8, mPrivateData)}));
    if (empty->mPrivateData == nullptr) return run.Fail("no instance is left in the record");
    bundle.Call(kSelector_CloseFile, nullptr, empty->mPrivateData);
}

void CheckPreferredSize(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const CheckedInstance instance(bundle, kCheckSettings);
    CheckedRecord<imPreferredFrameSizeRec> record;
    record->mPrivateData = instance.Get();
    record->mIndex = 0;
    record.Arm();
    run.Doing("asking for the first preferred size");
    run.Expect("the result", bundle.Call(kSelector_PreferredFrameSize, record.Get(), nullptr).result,
               +kResult_Success);
    run.Expect<std::uint32_t>("the width", record->mWidth, kCheckSettings.size.width);
    run.Expect<std::uint32_t>("the height", record->mHeight, kCheckSettings.size.height);
    run.FailIf(record.Touched({CV_RECORD_FIELD(imPreferredFrameSizeRec, mWidth),
                               CV_RECORD_FIELD(imPreferredFrameSizeRec, mHeight)}));
    for (const std::int32_t index : {1, -1}) {
        record->mIndex = index;
        record.Arm();
        run.Doing(fmt::format("asking for preferred size {}", index));
        run.Expect("the result", bundle.Call(kSelector_PreferredFrameSize, record.Get(), nullptr).result,
                   +kResult_Unsupported);
        run.FailIf(record.Touched());
    }
}

void CheckInstancesAreFreed(CheckRun& run) {
    constexpr int kRounds = 200;
    const Bundle bundle(run.BundlePath());
    const MemoryFile file(WriteSettings(kCheckSettings));
    std::uint64_t before = 0;
    run.Doing("opening and closing a clip");
    for (int round = 0; round < 2 * kRounds; ++round) {
        if (round == kRounds) before = HeapInUse();
        const CheckedInstance instance(bundle, kCheckSettings);
        CheckedRecord<imFileInfoRec8> info;
        info->mPrivateData = instance.Get();
        info->mPrefs = nullptr;
        bundle.Call(kSelector_GetInfo8, AccessTo(file.Path()).Get(), info.Get());
    }
    const std::uint64_t after = HeapInUse();
    if (after > before + kRounds)
        run.Fail(fmt::format("{} bytes more are in use after {} rounds", after - before, kRounds));
}

} // namespace corvane
