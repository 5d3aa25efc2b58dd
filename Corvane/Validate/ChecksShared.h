/// What the sources of the checks share. Not for others.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Checks.h"
#include "Engine/Bundle.h"

namespace corvane {

// The checks, by subject.
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

/// A regular file that lives in memory: it needs no folder, and nothing of it stays when the process is
/// ended.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view text);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// The path by which it can be opened; zero-terminated, owned by this object.
    const char16_t* Path() const { return mPath.c_str(); }

  private:
    int mDescriptor;
    std::u16string mPath;
};

/// A path that names nothing.
inline constexpr char16_t kMissingPath[] = u"/no such folder/no such clip.synthex";

/// Settings that a check asks for; the colors are different in every channel.
struct CheckSettings {
    CvPixelFormat format = CvPixelFormat_BGRA_4444_8u;
    std::uint32_t width = 46;
    std::uint32_t height = 34;
    std::uint32_t parNumerator = 12;
    std::uint32_t parDenominator = 11;
    std::int32_t fieldType = 0;
    std::uint32_t renderFormat = 0;
    std::int64_t ticksPerFrame = 8475667200; ///< 30000/1001
    std::int64_t frames = 25;

    /// The colors as the raster service takes them: blue, green, red, alpha.
    static constexpr float kUpper[4] = {0.25f, 0.5f, 0.75f, 0.625f};
    static constexpr float kLower[4] = {0.875f, 0.375f, 0.125f, 0.5f};
    static constexpr float kTopStart[4] = {0.0625f, 0.6875f, 0.3125f, 0.9375f};
    static constexpr float kTopEnd[4] = {0.8125f, 0.1875f, 0.4375f, 0.5625f};
    static constexpr float kBottomStart[4] = {0.96875f, 0.03125f, 0.71875f, 0.28125f};
    static constexpr float kBottomEnd[4] = {0.15625f, 0.84375f, 0.40625f, 0.59375f};

    /// The text of the settings file.
    std::string Text() const;
};

/// An instance that a plug-in made, closed at the end.
class CheckedInstance {
  public:
    /// Opens a settings file with that text. Throws `Failure` where that fails.
    CheckedInstance(const Bundle& bundle, const std::string& text);
    ~CheckedInstance();
    CheckedInstance(const CheckedInstance&) = delete;
    CheckedInstance& operator=(const CheckedInstance&) = delete;

    void* Get() const { return mInstance; }
    /// Gives the instance away to somebody who closes it.
    void* Release() { return std::exchange(mInstance, nullptr); }

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

/// A clause that says what is wrong with the answer to settings that are refused; empty where it is right.
std::string WrongRefusal(const Answer& answer);

/// Bytes of the heap in use by this process.
std::uint64_t HeapInUse();

} // namespace corvane
