/// What the sources of the checks share. Not for others. None of it is to be shared by threads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "CheckedRecord.h"
#include "Checks.h"
#include "Engine/Bundle.h"
#include "Engine/SettingsText.h"
#include "Services/Foundation/FileDescriptor.h"

namespace corvane {

// The checks of `AllChecks`, by subject: each notes in `run` what it finds. They may throw `Failure`.
void CheckLoads(CheckRun& run);
void CheckEntry(CheckRun& run);
void CheckInit(CheckRun& run);
void CheckShutdown(CheckRun& run);
void CheckReload(CheckRun& run);

void CheckSelectorsWithoutInstance(CheckRun& run);
void CheckSelectorsWithInstance(CheckRun& run);
void CheckFormatRegistration(CheckRun& run);
void CheckPixelFormatList(CheckRun& run);

void CheckOpenAndClose(CheckRun& run);
void CheckMissingFile(CheckRun& run);
void CheckMalformedFile(CheckRun& run);
void CheckInfoOfFile(CheckRun& run);
void CheckInfoOfPrefs(CheckRun& run);
void CheckPreferredSize(CheckRun& run);
void CheckInstancesAreFreed(CheckRun& run);

void CheckPrefsSize(CheckRun& run);
void CheckPrefsOfFile(CheckRun& run);
void CheckMalformedPrefs(CheckRun& run);

void CheckFrames(CheckRun& run);
void CheckFields(CheckRun& run);
void CheckGradient(CheckRun& run);
void CheckRepeatedFrame(CheckRun& run);
void CheckImpossibleFrames(CheckRun& run);

void CheckSequences(CheckRun& run);

/// A regular file that lives in memory: it needs no folder, and nothing of it stays when the process is
/// ended.
class MemoryFile {
  public:
    /// Throws `Failure` if there is no memory for it.
    explicit MemoryFile(std::string_view text);

    /// The path by which it can be opened; zero-terminated, owned by this object.
    const char16_t* Path() const { return mPath.c_str(); }

  private:
    FileDescriptor mDescriptor;
    std::u16string mPath;
};

/// A path that names nothing.
inline constexpr char16_t kMissingPath[] = u"/no such folder/no such clip.synthex";

/// The settings that checks ask for unless they say otherwise. All sides, terms and channels are different.
inline constexpr ClipSettings kCheckSettings{
    .pixelFormat = CvPixelFormat_BGRA_4444_8u,
    .size = {46, 34},
    .aspect = {12, 11},
    .ticksPerFrame = 8475667200, // 30000/1001
    .durationTicks = 25 * 8475667200,
    .upper = {0.25f, 0.5f, 0.75f, 0.625f},
    .lower = {0.875f, 0.375f, 0.125f, 0.5f},
    .topStart = {0.0625f, 0.6875f, 0.3125f, 0.9375f},
    .topEnd = {0.8125f, 0.1875f, 0.4375f, 0.5625f},
    .bottomStart = {0.96875f, 0.03125f, 0.71875f, 0.28125f},
    .bottomEnd = {0.15625f, 0.84375f, 0.40625f, 0.59375f},
};

/// Settings with another value for one member: `With(&ClipSettings::fieldType, 1)`.
template <class T>
constexpr ClipSettings With(T ClipSettings::*member, std::type_identity_t<T> value,
                            ClipSettings settings = kCheckSettings) {
    settings.*member = value;
    return settings;
}

/// An instance that a plug-in made, closed at the end.
class CheckedInstance {
  public:
    /// Opens a file of those settings. Throws `Failure` if that fails.
    CheckedInstance(const Bundle& bundle, const ClipSettings& settings);
    ~CheckedInstance();
    CheckedInstance(const CheckedInstance&) = delete;
    CheckedInstance& operator=(const CheckedInstance&) = delete;

    void* Get() const { return mInstance; }

  private:
    const Bundle& mBundle;
    void* mInstance = nullptr;
};

/// Settings texts that are refused, and what is wrong with them.
struct MalformedText {
    const char* what;
    const char* text;
};
inline constexpr MalformedText kMalformedTexts[] = {
    {"an empty text", ""},
    {"a text that ends early", R"({"mFrameWidth":720)"},
    {"a text that goes on after its end", "{} {}"},
    {"a list instead of an object", "[]"},
    {"a number as the whole text", "1"},
    {"a text where a number is due", R"({"mFrameWidth":"720"})"},
    {"a width with a fraction", R"({"mFrameWidth":720.0})"},
    {"a number where an object is due", R"({"mFramePAR":1})"},
};

/// A clause that says what is wrong with the answer to settings that are to be refused; empty if it is right.
std::string WrongRefusal(const Answer& answer);

/// Sends a selector with a record for its second parameter. Notes a result that is not `wanted`, and whatever
/// of the record changed but for the fields that may be `written`.
template <class Record>
void Ask(CheckRun& run, const Bundle& bundle, std::int32_t selector, void* param1,
         CheckedRecord<Record>& record, std::int32_t wanted,
         std::initializer_list<RecordField> written = {}) {
    record.Arm();
    run.Expect("the result", bundle.Call(selector, param1, record.Get()).result, wanted);
    run.FailIf(record.Touched(written));
}

/// Bytes of the heap that this process uses.
std::uint64_t HeapInUse();

} // namespace corvane
