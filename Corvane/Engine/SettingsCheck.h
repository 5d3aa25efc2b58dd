/// What is out of the ordinary in a settings text: findings for people who write such texts, and the schema
/// by which editors and validators find the same. Any thread.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "SettingsMembers.h"

namespace corvane {

/// Something that reading a settings text passes over, or refuses without saying where it is.
struct SettingsFinding {
    std::string key;      ///< "mFrameWidth", "mFramePAR.numerator"; empty if it is about the whole text
    std::string sentence; ///< says the key, what is wrong and the remedy, without a full stop
};

/// What keeps a settings text from being one of all fourteen keys and no others, with values by which a clip
/// can be rendered. Empty for what the plug-in writes of such a clip. Fails only for want of memory.
std::vector<SettingsFinding> CheckSettings(const std::string& text);

/// A number that stands for something.
struct SettingsCode {
    std::int64_t number;
    std::string words; ///< for people
};

/// All numbers of a kind, none for `kNone`.
std::vector<SettingsCode> CodesOf(SettingsCodes codes);

/// The JSON schema (draft 2020-12) of settings files: what it takes, `CheckSettings` has no findings for. A
/// validator can't see that a whole number is written as 720.0, which the plug-in refuses.
nlohmann::ordered_json SettingsSchema();

/// The head that all schemas begin with.
nlohmann::ordered_json SchemaHead(const char* title);

/// The schema of an object that has these members, all of them and no others.
nlohmann::ordered_json ClosedObject(const nlohmann::ordered_json& properties);

} // namespace corvane
