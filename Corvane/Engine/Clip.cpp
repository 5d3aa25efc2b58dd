#include "Clip.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Mosk.h"
#include "Records.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/Raster/PixelFormats.h"
#include "SettingsText.h"

namespace corvane {

namespace {

/// The path as the plug-in takes it.
std::u16string PluginPath(const std::filesystem::path& path) {
    try {
        return Mosk::FromUTF8(path.string());
    } catch (const std::invalid_argument&) {
        throw Failure(fmt::format("{}: the name is not valid UTF-8; rename the file.", path.string()));
    }
}

/// Why settings of that many bytes are not read; empty if they are.
std::string WhyTooLarge(const char* what, std::uint64_t size) {
    if (size <= Mosk::File::kSizeLimit) return {};
    return fmt::format("{} {} bytes, more than the {} that settings may have", what, size,
                       Mosk::File::kSizeLimit);
}

/// Why a settings file that the plug-in could not read can't be read.
std::string WhyUnreadable(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return errno == ENOENT ? "there is no such file" : std::string(std::strerror(errno));
    if (S_ISDIR(status.st_mode)) return "this is a folder, not a settings file";
    if (!S_ISREG(status.st_mode)) return "this is a pipe or a device, not a settings file";
    if (auto why = WhyTooLarge("the file has", static_cast<std::uint64_t>(status.st_size)); !why.empty())
        return why;
    if (::access(path.c_str(), R_OK) != 0) return "you are not allowed to read this file";
    return "the plug-in can't read this file";
}

} // namespace

std::optional<CvPixelFormat> DeliveredFormat(const std::shared_ptr<Bundle>& bundle, CvPixelFormat format) {
    const std::string prefs =
        WriteSettings({.pixelFormat = format, .size = {2, 2}, .ticksPerFrame = 1, .durationTicks = 1});
    imFileAccessRec8 access = HostRecord<imFileAccessRec8>();
    access.mFilePath = u"";
    imFileInfoRec8 info = HostRecord<imFileInfoRec8>();
    info.mPrivateData = nullptr;
    info.mPrefs = prefs.c_str();
    bundle->Call(kSelector_GetInfo8, &access, &info);
    std::optional<CvPixelFormat> delivered;
    if (info.mPrivateData == nullptr) return delivered;

    CvVexelHandle handle = nullptr;
    imSourceVideoRec request = HostRecord<imSourceVideoRec>();
    request.mPrivateData = info.mPrivateData;
    request.mFrameTime = 0;
    request.mFrame = &handle;
    const Answer answer = bundle->CallForFrame(request);
    if (handle != nullptr) {
        const Frame frame(handle);
        if (answer.result == kResult_Success) delivered = frame.Format();
    }
    bundle->Call(kSelector_CloseFile, nullptr, info.mPrivateData);
    return delivered;
}

Clip::Clip(std::shared_ptr<Bundle> bundle, std::string name)
    : mBundle(std::move(bundle)), mName(std::move(name)) {}

std::unique_ptr<Clip> Clip::OpenFile(std::shared_ptr<Bundle> bundle, const std::filesystem::path& path) {
    std::unique_ptr<Clip> clip(new Clip(std::move(bundle), path.string()));
    clip->mPath = PluginPath(path);
    clip->OpenInstance(path);
    clip->AskForSettings();
    clip->AskForInfo();
    return clip;
}

std::unique_ptr<Clip> Clip::OpenPrefs(std::shared_ptr<Bundle> bundle, std::string name, std::string prefs) {
    std::unique_ptr<Clip> clip(new Clip(std::move(bundle), std::move(name)));
    if (const std::string why = WhyTooLarge("its settings have", prefs.size()); !why.empty()) clip->Fail(why);
    clip->mPrefs = std::move(prefs);
    clip->AskForInfo();
    return clip;
}

Clip::~Clip() {
    if (mInstance != nullptr) mBundle->Call(kSelector_CloseFile, nullptr, mInstance);
}

void Clip::Fail(const std::string& reason) const {
    const std::string_view stop =
        reason.ends_with('.') ? "" : "."; // the plug-in's own texts may end with one
    throw Failure(fmt::format("{}: {}{}", mName, reason, stop));
}

void Clip::OpenInstance(const std::filesystem::path& path) {
    imFileOpenRec8 record = HostRecord<imFileOpenRec8>();
    record.mFilePath = mPath.c_str();
    record.mPrivateData = nullptr;
    const Answer answer = mBundle->Call(kSelector_OpenFile8, nullptr, &record);
    mInstance = record.mPrivateData;
    if (answer.result == kResult_Success) return;
    if (answer.result == kResult_FileUnreadable) Fail(WhyUnreadable(path));
    Fail(fmt::format("these are no settings the plug-in can read ({})",
                     answer.alert.empty() ? fmt::format("result {}", answer.result) : answer.Reason()));
}

void Clip::AskForSettings() {
    // For a file that exists and a first-time flag the plug-in shows no dialog and writes the file's
    // settings.
    std::string buffer(kPrefsBufferSize, '\0');
    imFileAccessRec8 access = HostRecord<imFileAccessRec8>();
    access.mFilePath = mPath.c_str();
    imGetPrefsRec prefs = HostRecord<imGetPrefsRec>();
    prefs.mPrefs = buffer.data();
    prefs.mFirstTime = 1;
    const Answer answer = mBundle->Call(kSelector_GetPrefs, &access, &prefs);
    mPrefs = buffer.substr(0, buffer.find('\0'));
    if (answer.result != kResult_Success) Fail("the file changed while it was being opened; try again");
}

void Clip::AskForInfo() {
    imFileAccessRec8 access = HostRecord<imFileAccessRec8>();
    access.mFilePath = mPath.c_str();
    imFileInfoRec8 info = HostRecord<imFileInfoRec8>();
    info.mPrivateData = mInstance;
    info.mPrefs = mPrefs.c_str();
    // What a request does not write stays 0 rather than the fill of a fresh record.
    info.mScale = info.mSampleSize = info.mDuration = 0;
    const Answer answer = mBundle->Call(kSelector_GetInfo8, &access, &info);
    mInstance = info.mPrivateData;
    if (answer.result != kResult_Success)
        Fail(fmt::format("the plug-in does not say what this clip is ({})",
                         answer.alert.empty() ? fmt::format("result {}", answer.result) : answer.Reason()));
    mInfo.format = {.size = {info.mWidth, info.mHeight},
                    .aspect = {info.mParNumerator, info.mParDenominator},
                    .rate = {info.mScale, info.mSampleSize},
                    .order = FieldOrderOf(info.mFieldType)};
    mInfo.fieldType = info.mFieldType;
    mInfo.depth = info.mDepth;
    mInfo.duration = info.mDuration;
    ReadTiming();
    if (const auto delivered = DeliveredFormat(mBundle, mInfo.pixelFormat))
        mInfo.format.raster = RasterFormatOf(*delivered);
}

void Clip::ReadTiming() {
    const ClipSettings settings = ReadSettings(mPrefs);
    mInfo.pixelFormat = settings.pixelFormat;
    mInfo.ticksPerFrame = settings.ticksPerFrame;
    mInfo.durationTicks = settings.durationTicks;
    if (mInfo.ticksPerFrame > 0 && mInfo.durationTicks > 0)
        mInfo.frames = mInfo.durationTicks / mInfo.ticksPerFrame;
}

std::string Clip::WhyNotRenderable() const {
    if (mInfo.ticksPerFrame <= 0) return "the clip has no frame rate (its frame duration is not above 0)";
    if (mInfo.durationTicks <= 0) return "the clip has no duration (it is not above 0)";
    if (mInfo.frames == 0) return "the clip is shorter than one frame";
    if (mInfo.format.raster == 0) return "the host has no pixel format " + PixelFormatHex(mInfo.pixelFormat);
    return WhyNoFrame(mInfo.format);
}

std::string Clip::WhyNoFrameAt(std::int64_t index) const {
    constexpr std::int64_t kLast = std::numeric_limits<std::int32_t>::max();
    if (index < 0 || index >= mInfo.frames)
        return fmt::format("there is no frame {}; the clip has {}", index,
                           mInfo.frames == 0 ? "none" : fmt::format("frames 0 to {}", mInfo.frames - 1));
    if (index > kLast)
        return fmt::format("frame {} can't be made: the plug-in counts frames up to {}", index, kLast);
    return {};
}

Frame Clip::GetFrame(std::int64_t index) const {
    if (const std::string reason = WhyNoFrameAt(index); !reason.empty()) Fail(reason);
    // The host makes frames without pixels; nobody can use them.
    if (mInfo.format.size.width == 0 || mInfo.format.size.height == 0) Fail(WhyNotRenderable());
    CvVexelHandle handle = nullptr;
    imSourceVideoRec record = HostRecord<imSourceVideoRec>();
    record.mPrivateData = mInstance;
    record.mFrameTime = index * mInfo.ticksPerFrame;
    record.mFrame = &handle;
    const Answer answer = mBundle->CallForFrame(record);
    if (answer.result == kResult_Success && handle != nullptr) return Frame(handle);
    if (handle != nullptr) VexelSuite()->Dispose(handle);
    std::string reason = answer.alert.empty() ? WhyNotRenderable() : answer.Reason();
    if (reason.empty()) reason = fmt::format("the plug-in could not make a frame (result {})", answer.result);
    Fail(reason);
}

} // namespace corvane
