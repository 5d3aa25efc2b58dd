#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Axes.h"
#include "Engine/SettingsText.h"

namespace corvane {

/// A member of a manifest, and the video in a folder that was made from its output.
struct MemberVideo {
    std::string output;       ///< as in the manifest
    std::string settingsFile; ///< the same
    ClipSettings settings;
    std::optional<FramesOfPart> part; ///< as in `MemberSpec`
    std::filesystem::path video;      ///< a file or numbered pictures; empty if there is none
    std::string whyNone;              ///< as a sentence
};

/// Finds the videos of a family, whose `manifest` may be its folder: those that are called like the outputs,
/// or like them but for the suffix. Throws `Failure`, which names the remedy, if there is no such manifest or
/// no such folder. Any thread.
std::vector<MemberVideo> FindVideos(const std::filesystem::path& manifest,
                                    const std::filesystem::path& folder);

} // namespace corvane
