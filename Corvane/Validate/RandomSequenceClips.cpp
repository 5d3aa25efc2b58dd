#include <algorithm>
#include <cstring>

#include "Engine/Frame.h"
#include "RandomSequence.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/Frames/Suites.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane {

/// What comes of reading a text, or none, into `settings`.
Expected RandomSequence::Read(const SettingsBytes* text, ClipSettings& settings) {
    if (text == nullptr) return {kResult_FileUnreadable};
    if (!text->settings) return kRefused;
    settings = *text->settings;
    return {};
}

void RandomSequence::OpenFile() {
    const Path path = AnyPath();
    Instance* const instance = AnyInstance();
    Sent<imFileOpenRec8> record(mMemory.first, mRandom);
    record->mFilePath = path.text;
    record->mPrivateData = instance == nullptr ? nullptr : instance->pointer;
    record.Arm();
    ClipSettings created = kNewSettings;
    const Expected expected = Read(path.file, instance == nullptr ? created : instance->settings);
    const bool isNew = instance == nullptr && expected.result == kResult_Success;
    // Of a file that is not there, null is stored.
    if (instance == nullptr && !expected.told) record.ExpectWrites();
    Send(kSelector_OpenFile8, Wild(), record.Get(), expected, record);
    if (isNew) TakeNew(record.To().mPrivateData = record->mPrivateData, created);
    Compare(record);
}

namespace {

/// What clip information says of settings.
void Describe(const ClipSettings& settings, imFileInfoRec8& info) {
    std::uint32_t scale = 0, sampleSize = 0;
    LegacySuite2()->TicksToRate(settings.ticksPerFrame, &scale, &sampleSize);
    const auto frames =
        static_cast<std::uint32_t>(lummediatypes::TickTime(settings.durationTicks)
                                       .ToFrame32(lummediatypes::FrameRate(settings.ticksPerFrame)));
    info.mWidth = settings.size.width;
    info.mHeight = settings.size.height;
    info.mDepth = 32;
    info.mFieldType = static_cast<std::uint8_t>(settings.fieldType);
    info.mFlag22 = 1;
    info.mParNumerator = settings.aspect.numerator;
    info.mParDenominator = settings.aspect.denominator;
    info.mFlag54 = 1;
    info.mScale = scale;
    info.mSampleSize = sampleSize;
    info.mDuration = frames * sampleSize;
}

} // namespace

void RandomSequence::AskForInfo() {
    const Path path = AnyPath();
    const SettingsBytes& prefs = mRandom.Of(mTexts);
    Instance* const instance = AnyInstance();
    Sent<imFileAccessRec8> access(mMemory.first, mRandom);
    Sent<imFileInfoRec8> info(mMemory.second, mRandom);
    access->mFilePath = path.text;
    info->mPrefs = mRandom.OneIn(4) ? nullptr : PlaceText(prefs);
    info->mPrivateData = instance == nullptr ? nullptr : instance->pointer;
    access.Arm();
    info.Arm();

    info.ExpectWrites();
    info.To().mHasVideo = 1;
    ClipSettings created = kNewSettings;
    ClipSettings& settings = instance == nullptr ? created : instance->settings;
    Expected expected;
    if (path.file == nullptr) expected = Read(info->mPrefs == nullptr ? nullptr : &prefs, settings);
    if (expected.result == kResult_Success) Describe(settings, info.To());
    Send(kSelector_GetInfo8, access.Get(), info.Get(), expected, access, info);
    // A new instance whose first call throws is not kept; any other is, even if nothing can be said of it.
    if (instance == nullptr && !expected.told) TakeNew(info.To().mPrivateData = info->mPrivateData, created);
    Compare(access, info);
}

/// The settings that a preferences request begins with: those of a text, or of a new clip.
Expected RandomSequence::StartingPrefs(const SettingsBytes* text, imGetPrefsRec& prefs,
                                       ClipSettings& settings) {
    if (text != nullptr) return Read(text, settings);
    settings = kNewSettings;
    settings.size = {prefs.mSequenceWidth, prefs.mSequenceHeight};
    settings.aspect = {prefs.mSequenceParNumerator, prefs.mSequenceParDenominator};
    settings.ticksPerFrame = 0;
    LegacySuite1()->RateToTicks(prefs.mSequenceScale, prefs.mSequenceSampleSize, &settings.ticksPerFrame);
    return {};
}

/// What comes of a dialog, which is worked by `platform` if there is one.
Expected RandomSequence::RunDialog(ClipSettings& settings, std::optional<ScriptedPlatform>& platform) {
    if (mRandom.OneIn(4)) return kRefused;
    const bool cancel = mRandom.OneIn(2);
    platform.emplace(DialogScript{{}, {}, cancel, false});
    if (cancel) return {kResult_Cancelled};
    // In seconds, which a dialog begins with, no duration is shorter than one frame.
    if (settings.durationTicks <= 0) settings.durationTicks = settings.ticksPerFrame;
    return {};
}

void RandomSequence::AskForPrefs() {
    static constexpr Rate kSequenceRates[] = {{25, 1}, {30, 1}, {24, 1}, {1, 2}, {0, 0}};
    const Path path = AnyPath();
    const SettingsBytes& old = mRandom.Of(mTexts);
    Sent<imFileAccessRec8> access(mMemory.first, mRandom);
    Sent<imGetPrefsRec> prefs(mMemory.second, mRandom);
    SentBytes buffer(mMemory.buffer, kPrefsBufferSize, mRandom);
    std::memset(buffer.Sent(), kUndefinedByte, kPrefsBufferSize);
    std::memcpy(buffer.Sent(), old.bytes.c_str(), old.bytes.size() + 1);
    const bool isNew = mRandom.OneIn(2);
    const Rate rate = mRandom.Of(kSequenceRates);
    access->mFilePath = path.text;
    prefs->mPrefs = mRandom.OneIn(4) ? nullptr : reinterpret_cast<char*>(buffer.Sent());
    prefs->mFirstTime = isNew ? static_cast<std::uint8_t>(1 + mRandom.Below(255)) : 0;
    prefs->mSequenceScale = rate.scale;
    prefs->mSequenceSampleSize = rate.sampleSize;
    access.Arm();
    prefs.Arm();
    buffer.Arm();

    Expected expected;
    std::optional<ScriptedPlatform> platform;
    if (prefs->mPrefs != nullptr) {
        ClipSettings settings;
        const SettingsBytes* const prior = isNew ? nullptr : &old;
        expected = StartingPrefs(path.file != nullptr ? path.file : prior, *prefs.Get(), settings);
        if (!expected.told && (path.file == nullptr || !isNew)) expected = RunDialog(settings, platform);
        const std::string text = WriteSettings(settings);
        if (!expected.told) {
            std::memcpy(buffer.After(), text.c_str(), text.size() + 1);
            buffer.ExpectWrites(); // it may hold that text already
        }
    }
    if (!expected.told) prefs.To().mPrefsLength = kPrefsBufferSize;
    std::optional<ScopedPlatform> scope;
    if (platform) scope.emplace(*platform);
    Send(kSelector_GetPrefs, access.Get(), prefs.Get(), expected, access, prefs, buffer);
    Compare(access, prefs, buffer);
}

void RandomSequence::AskForSize() {
    const Instance* const instance = AnyInstance();
    Sent<imPreferredFrameSizeRec> record(mMemory.first, mRandom);
    record->mPrivateData = instance == nullptr ? nullptr : instance->pointer;
    if (mRandom.OneIn(2)) record->mIndex = 0;
    record.Arm();
    Expected expected{kResult_NoInstance};
    if (instance != nullptr) expected.result = record->mIndex == 0 ? kResult_Success : kResult_Unsupported;
    if (expected.result == kResult_Success) {
        record.To().mWidth = instance->settings.size.width;
        record.To().mHeight = instance->settings.size.height;
    }
    Send(kSelector_PreferredFrameSize, record.Get(), Wild(), expected, record);
    Compare(record);
}

void RandomSequence::AskForFrame() {
    const Instance* const instance = AnyInstance();
    Sent<CvVexelHandle> handle(mMemory.first, mRandom);
    Sent<imSourceVideoRec> record(mMemory.second, mRandom);
    record->mPrivateData = instance == nullptr ? nullptr : instance->pointer;
    record->mFrame = handle.Get();
    handle.Arm();
    record.Arm();
    const Size size = instance == nullptr ? Size() : instance->settings.size;
    Expected expected{kResult_NoInstance};
    if (instance != nullptr) {
        handle.To() = nullptr; // at first, and if the host makes no such frame
        if (FindPixelFormat(instance->settings.pixelFormat) == nullptr)
            expected = kRefused;
        else if (std::max(size.width, size.height) <= GetFrameLimits().maxSide)
            expected = {};
    }
    if (expected.told) handle.Arm(); // nothing is made
    Send(kSelector_GetSourceVideo, nullptr, record.Get(), expected, handle, record);
    if (expected.result == kResult_Success && *handle.Get() != nullptr) {
        handle.To() = *handle.Get();
        const Frame frame(*handle.Get());
        mRun.Expect("the frame's width", frame.View().width, size.width);
        mRun.Expect("the frame's height", frame.View().height, size.height);
    } else if (expected.result == kResult_Success) {
        mRun.Fail("no frame came");
    }
    Compare(handle, record);
}

} // namespace corvane
