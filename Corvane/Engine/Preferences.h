#pragma once

#include <filesystem>
#include <string>

#include "Bundle.h"
#include "ClipFormat.h"
#include "Services/Foundation/FileJournal.h"

namespace corvane {

/// The sequence that a new clip is made for unless the person says otherwise.
inline constexpr ClipFormat kDefaultSequence{.size = {1920, 1080}, .rate = {30, 1}};

/// A request to let the person edit a clip's settings.
struct PreferencesRequest {
    /// The clip's settings file; empty if it has none.
    std::filesystem::path file;
    /// Of a clip without a file, its settings text; empty for a new clip.
    std::string settings;
    /// Of a new clip: the format of the sequence that it is made for, whose size, aspect and rate it begins
    /// with.
    ClipFormat sequence = kDefaultSequence;
};

/// How a request ended.
enum class PreferencesOutcome {
    kDone,       ///< the person confirmed the settings
    kUseFile,    ///< the person saved them, and the saved file is to be the clip's source
    kNotSaved,   ///< the same, but they are not in that file: keep them elsewhere
    kCancelled,  ///< the settings are as they were
    kUnreadable, ///< the clip's file could not be read
    kFailed
};

/// What came of a request.
struct PreferencesAnswer {
    PreferencesOutcome outcome = PreferencesOutcome::kFailed;
    std::string settings;       ///< the settings text; of `kDone`, `kNotSaved` and `kCancelled`
    std::filesystem::path file; ///< of `kUseFile`: the saved file
    std::string message;        ///< of `kNotSaved`, `kUnreadable` and `kFailed`: why, as half a sentence
};

/// Sends the preferences request (selector 38) as a host does, which shows the plug-in's dialog on the
/// process's platform and returns when it has closed. `journal` tells which files the plug-in wrote
/// meanwhile. Never fails: the answer says what went wrong. UI thread.
PreferencesAnswer RequestPreferences(const Bundle& bundle, const PreferencesRequest& request,
                                     const FileJournal& journal);

} // namespace corvane
