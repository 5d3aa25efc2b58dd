/// Random requests, and the model that they are compared with. Not for others than the checks.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "ChecksShared.h"
#include "RandomClips.h"
#include "SentRecord.h"
#include "Services/UI/ScriptedPlatform.h"
#include "lummediatypes.h"

namespace corvane {

/// What a new instance holds, and a new clip for all that its sequence does not say.
inline constexpr ClipSettings kNewSettings{
    .pixelFormat = CvPixelFormat_BGRA_4444_8u,
    .size = {720, 480},
    .aspect = {40, 33},
    .fieldType = lummediatypes::kFieldType_LowerFirst,
    .ticksPerFrame = lummediatypes::kTicksPerSecond / 30,
    .durationTicks = 60 * lummediatypes::kTicksPerSecond,
    .upper = {0.25f, 0.5f, 1, 1},
    .lower = {0, 1, 0, 1},
    .topStart = {0, 0, 1, 1},
    .topEnd = {0.5f, 0.5f, 0.5f, 1},
    .bottomStart = {0, 1, 0, 1},
    .bottomEnd = {0.25f, 0.5f, 1, 1},
};

/// What is expected of a request: its result, and whether the person is told of an exception.
struct Expected {
    std::int32_t result = kResult_Success;
    bool told = false;
};
inline constexpr Expected kRefused{kResult_Unsupported, true};

/// The memory of all sequences: mapping it anew for every record would take longer than the requests.
struct SequenceMemory {
    GuardedMemory first{1024}, second{1024}, text{8192}, buffer{kPrefsBufferSize};
};

/// Requests in random order, with random records, against a model of what the plug-in is to answer: the
/// instances that there are, and the settings of each. Notes in `run` what it finds.
class RandomSequence {
  public:
    /// The same number makes the same requests every time. Throws `Failure` if the system has no memory for
    /// the settings files. The others outlive this object.
    RandomSequence(CheckRun& run, const Bundle& bundle, SequenceMemory& memory, std::uint64_t number)
        : mRun(run), mBundle(bundle), mMemory(memory), mNumber(number), mRandom(number) {
        for (int i = 0; i < 3; ++i) {
            mTexts.push_back(RandomBytes(mRandom));
            mFiles.emplace_back(mTexts.back().bytes);
        }
    }
    /// Closes the instances that are left.
    ~RandomSequence() {
        for (const Instance& instance : mInstances)
            mBundle.Call(kSelector_CloseFile, nullptr, instance.pointer);
    }

    /// Sends the requests, until one is answered wrongly.
    void Make();

  private:
    struct Instance {
        void* pointer = nullptr;
        ClipSettings settings = kNewSettings;
    };
    struct Path {
        const char16_t* text;
        const SettingsBytes* file; ///< what the file holds; null if there is none
    };

    void Initialize();
    void ShutDown();
    void AskWithoutRecord();
    void AskUnsupported();
    void CloseFile();
    void AskForFormat();
    void AskForPixelFormat();
    void AskForInfo();
    void AskForPrefs();
    void OpenFile();
    void AskForSize();
    void AskForFrame();

    /// Any pointer: one that must not be followed.
    void* Wild() { return reinterpret_cast<void*>(mRandom.Bits()); }
    Path AnyPath();
    /// An instance that there is, or null for none.
    Instance* AnyInstance() {
        return mInstances.empty() || mRandom.OneIn(5) ? nullptr
                                                      : &mInstances[mRandom.Below(mInstances.size())];
    }
    const char* PlaceText(const SettingsBytes& text);
    void TakeNew(void* pointer, const ClipSettings& settings);
    static Expected Read(const SettingsBytes* text, ClipSettings& settings);
    static Expected StartingPrefs(const SettingsBytes* text, imGetPrefsRec& prefs, ClipSettings& settings);
    Expected RunDialog(ClipSettings& settings, std::optional<ScriptedPlatform>& platform);

    /// Sends a request and compares the answer. The records that are to stay as they are can't be written.
    template <class... Records>
    void Send(std::int32_t selector, void* param1, void* param2, Expected expected, Records&... records) {
        (records.Protect(), ...);
        mRun.Doing(fmt::format("sending selector {} as request {} of random sequence {}", selector, mRequest,
                               mNumber));
        const Answer answer = selector == kSelector_GetSourceVideo
                                  ? mBundle.CallForFrame(*static_cast<imSourceVideoRec*>(param2))
                                  : mBundle.Call(selector, param1, param2);
        mRun.Expect("the result", answer.result, expected.result);
        if (expected.told)
            mRun.FailIf(WrongRefusal(answer));
        else if (!answer.alert.empty())
            mRun.Fail("the person is told: " + answer.Reason());
    }
    template <class... Records>
    void Compare(Records&... records) {
        (mRun.FailIf(records.Difference()), ...);
    }

    CheckRun& mRun;
    const Bundle& mBundle;
    SequenceMemory& mMemory;
    const std::uint64_t mNumber;
    int mRequest = 0;
    Random mRandom;
    std::vector<SettingsBytes> mTexts;
    std::deque<MemoryFile> mFiles; ///< of the texts
    std::vector<Instance> mInstances;
};

} // namespace corvane
