#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "PluginFixture.h"
#include "Services/Frames/Suites.h"
#include "Services/TestHooks.h"
#include "Tests/TestScript.h"

using Json = nlohmann::json;

/// The scripted platform, with what it was asked noted down.
class NotingPlatform : public corvane::ScriptedPlatform {
  public:
    explicit NotingPlatform(const std::string& actions = {}, const std::string& answers = {})
        : ScriptedPlatform(corvane::testing::Script(actions, answers)) {}

    std::optional<Mosk::String> RunSaveFileDialog(const corvane::SaveFileRequest& request) override {
        mOfferedNames.push_back(request.defaultName);
        return ScriptedPlatform::RunSaveFileDialog(request);
    }
    std::int32_t RunMessageBox(const corvane::MessageBoxRequest& request) override {
        mBoxes.push_back(request);
        return ScriptedPlatform::RunMessageBox(request);
    }
    std::optional<lumui::controls::ColorRGBA>
    RunColorPicker(const corvane::ColorPickerRequest& request) override {
        mColors.push_back(request.color);
        return ScriptedPlatform::RunColorPicker(request);
    }

    std::vector<Mosk::String> mOfferedNames;
    std::vector<corvane::MessageBoxRequest> mBoxes;
    std::vector<lumui::controls::ColorRGBA> mColors;
};

/// What came of one preferences request.
struct Outcome {
    int result = 0;
    std::string alert;
    std::vector<char> buffer;
    std::string path; ///< the bytes of the path block; empty where there is none
    imGetPrefsRec record;

    /// The settings in the buffer.
    Json Settings() const { return Json::parse(buffer.data()); }
};

/// Preferences requests (selector 38) to the loaded plug-in.
class PrefsTest : public PluginTest {
  protected:
    /// Nothing of a dialog is left behind, whatever happened in it.
    ~PrefsTest() override {
        EXPECT_EQ(corvane::CountLiveNodes(), 0);
        EXPECT_EQ(corvane::HostBlocksInUse(), 0);
    }

    /// Sends the request with whatever platform is set. `prefs` is what the buffer holds before.
    Outcome Request(const std::u16string& path, bool firstTime, std::string_view prefs) const {
        return Request(path, firstTime, prefs, mBundle);
    }
    static Outcome Request(const std::u16string& path, bool firstTime, std::string_view prefs,
                           const corvane::Bundle& bundle) {
        Outcome outcome;
        outcome.buffer.assign(kPrefsBufferSize, static_cast<char>(corvane::kUndefinedByte));
        prefs.copy(outcome.buffer.data(), prefs.size());
        outcome.buffer[prefs.size()] = 0;
        auto access = corvane::HostRecord<imFileAccessRec8>();
        access.mFilePath = path.c_str();
        access.mNewFilePath = nullptr;
        outcome.record = corvane::HostRecord<imGetPrefsRec>();
        outcome.record.mPrefs = outcome.buffer.data();
        outcome.record.mFirstTime = firstTime;
        outcome.record.mSequenceWidth = 1440;
        outcome.record.mSequenceHeight = 1080;
        outcome.record.mSequenceParNumerator = 4;
        outcome.record.mSequenceParDenominator = 3;
        outcome.record.mSequenceScale = 30000;
        outcome.record.mSequenceSampleSize = 1001;
        const corvane::Answer answer = bundle.Call(kSelector_GetPrefs, &access, &outcome.record);
        outcome.result = answer.result;
        outcome.alert = answer.alert;
        if (const char16_t* const block = access.mNewFilePath) {
            outcome.path.assign(reinterpret_cast<const char*>(block), corvane::HostBlockSize(block));
            corvane::MemoryFunctions()->Free(access.mNewFilePath);
        }
        return outcome;
    }

    /// Edits a clip without a file. The dialog's last state is in `mState` if it closed as planned.
    Outcome Edit(std::string_view prefs, const std::string& actions, const std::string& answers = {}) {
        NotingPlatform platform(actions, answers);
        return Edit(prefs, platform);
    }
    Outcome Edit(std::string_view prefs, NotingPlatform& platform) {
        const corvane::ScopedPlatform scope(platform);
        Outcome outcome = Request(u"/none", false, prefs);
        mState = platform.GetDump().empty() ? Json() : Json::parse(platform.GetDump());
        return outcome;
    }

    /// The settings that are left after an edit that ends with OK.
    Json Edited(std::string_view prefs, const std::string& actions, const std::string& answers = {}) {
        const Outcome outcome = Edit(prefs, actions, answers);
        EXPECT_EQ(outcome.result, kResult_Success) << outcome.alert;
        return outcome.result == kResult_Success ? outcome.Settings() : Json();
    }
    /// What the dialog's last state says of a control.
    Json State(const char* id, const char* key = "value") const { return mState[id][key]; }

    /// `kDistinctSettings` with some members replaced.
    static std::string Changed(std::initializer_list<std::pair<const char*, Json>> members) {
        Json settings = Json::parse(kDistinctSettings);
        for (const auto& [key, value] : members) settings[key] = value;
        return settings.dump();
    }

    Json mState; ///< the dialog's controls, just before it closed
};
