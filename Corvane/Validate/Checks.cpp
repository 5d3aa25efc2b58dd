#include "Checks.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <fmt/format.h>

#include "ChecksShared.h"
#include "Engine/Failure.h"
#include "Mosk.h"

namespace corvane {

std::span<const Check> AllChecks() {
    static constexpr Check kChecks[] = {
        {"The bundle loads.", CheckLoads, true},
        {"It exports its entry point.", CheckEntry, true},
        {"Initialization is answered and writes the six capability fields, nothing else.", CheckInit, true},
        {"Shutdown is answered, and the bundle leaves memory.", CheckShutdown},
        {"Every selector from -2 to 70 is answered by the contract without an instance, and touches nothing.",
         CheckSelectorsWithoutInstance},
        {"Opening a settings file makes an instance, and closing ends it.", CheckOpenAndClose, true},
        {"Every selector that needs no record of its own is answered by the contract with an instance.",
         CheckSelectorsWithInstance},
        {"One format is registered, byte by byte.", CheckFormatRegistration},
        {"One pixel format is listed: any.", CheckPixelFormatList},
        {"A missing file is reported and leaves no instance.", CheckMissingFile},
        {"Malformed files are refused with one alert each.", CheckMalformedFile},
        {"Clip information of a file is right and touches its own fields only.", CheckInfoOfFile},
        {"Clip information of a project's clip comes from its preferences.", CheckInfoOfPrefs},
        {"The preferred frame size is that of the clip.", CheckPreferredSize},
        {"The size of the preferences is told, and nothing else touched.", CheckPrefsSize},
        {"The preferences of a file are its settings.", CheckPrefsOfFile},
        {"Malformed preferences are refused with one alert each.", CheckMalformedPrefs},
        {"Frames of all pixel formats arrive in a concrete one, of the right size, aspect and color.",
         CheckFrames},
        {"Even rows take the upper field's color and odd rows the lower field's.", CheckFields},
        {"The gradient blends from top to bottom and from start to end.", CheckGradient},
        {"The same frame is made of the same bytes every time, and given back.", CheckRepeatedFrame},
        {"Frames that can't be made are refused and leave none behind.", CheckImpossibleFrames},
        {"Requests in random order, with records between guard pages, are answered by the contract.",
         CheckSequences},
        {"Instances that are closed leave no memory behind.", CheckInstancesAreFreed},
        {"Loading 100 times grows neither memory nor the number of mappings.", CheckReload},
    };
    return kChecks;
}

void CheckRun::Doing(const std::string& what) {
    mDoing = what;
    mOnDoing(what);
}

void CheckRun::Fail(const std::string& why) {
    if (mWhyFailed.empty()) mWhyFailed = mDoing.empty() ? why : fmt::format("while {}, {}", mDoing, why);
}

void CheckRun::FailIf(const std::string& why) {
    if (!why.empty()) Fail(why);
}

std::string CheckRun::Unexpected(const char* what, const std::string& found, const std::string& wanted) {
    return fmt::format("{} is {} instead of {}", what, found, wanted);
}

MemoryFile::MemoryFile(std::string_view text) : mDescriptor(::memfd_create("clip.synthex", MFD_CLOEXEC)) {
    if (!mDescriptor || !mDescriptor.Write(std::as_bytes(std::span(text))))
        throw Failure("The system has no memory for a settings file.");
    mPath = Mosk::FromUTF8(fmt::format("/proc/self/fd/{}", mDescriptor.Get()));
}

CheckedInstance::CheckedInstance(const Bundle& bundle, const ClipSettings& settings) : mBundle(bundle) {
    const MemoryFile file(WriteSettings(settings));
    CheckedRecord<imFileOpenRec8> record;
    record->mFilePath = file.Path();
    record->mPrivateData = nullptr;
    const Answer answer = bundle.Call(kSelector_OpenFile8, nullptr, record.Get());
    mInstance = record->mPrivateData;
    if (answer.result != kResult_Success || mInstance == nullptr)
        throw Failure(fmt::format("a settings file does not open (result {})", answer.result));
}

CheckedInstance::~CheckedInstance() {
    if (mInstance != nullptr) mBundle.Call(kSelector_CloseFile, nullptr, mInstance);
}

std::string WrongRefusal(const Answer& answer) {
    constexpr std::string_view kTag = "plugin.CvImportModule ";
    if (answer.result != kResult_Unsupported)
        return fmt::format("the result is {} instead of {}", answer.result, +kResult_Unsupported);
    std::size_t alerts = 0;
    for (std::size_t at = answer.alert.find(kTag); at != std::string::npos;
         at = answer.alert.find(kTag, at + 1))
        ++alerts;
    return alerts == 1 ? "" : fmt::format("the person is told {} times instead of once", alerts);
}

std::uint64_t HeapInUse() {
    const struct mallinfo2 heap = ::mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

} // namespace corvane
