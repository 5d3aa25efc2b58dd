#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Engine/SettingsText.h"

namespace corvane {

/// First and last frame, both included, from 0.
using FramesOfPart = std::pair<std::int64_t, std::int64_t>;

/// All that tells one member of a family from another.
struct MemberSpec {
    std::string name; ///< of the clip, without folder and suffix
    ClipSettings settings;
    std::string codec;     ///< as in `ExportOptions`; empty: the container's default
    std::string container; ///< as the format in `ExportOptions`; empty: from the suffix of the name
    std::optional<FramesOfPart> part = {}; ///< what to export of the clip; all if empty
};

/// One way in which members can differ: a setting of the clip, or how it is exported. Values are words, the
/// same on the command line, in plans, in names of files and in manifests.
struct AxisRow {
    const char* name; ///< also the placeholder's, in braces
    const char* about;
    bool ofClip; ///< whether it changes the clip, and not the export alone
    /// Puts a value into `spec`. Returns what can be written, as a clause, if the word is none; `spec` is as
    /// it was then.
    std::string (*read)(std::string_view word, MemberSpec& spec);
    /// The word for what `spec` has; the same word for equal values.
    std::string (*write)(const MemberSpec& spec);
};

/// All of them, in the order in which they are to be applied. Lives as long as the program. Any thread, as
/// for the two below.
std::span<const AxisRow> AxisTable();

/// The row of that name; null if there is none.
const AxisRow* FindAxis(std::string_view name);

/// What a word of the axis `part` says; empty if it is none. Any thread.
std::optional<FramesOfPart> ReadPartWord(std::string_view word);

/// The names of all axes, or of those of clips alone, for sentences: "name, size, rate".
std::string ListAxes(bool ofClip = false);

} // namespace corvane
