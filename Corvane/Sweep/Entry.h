#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Export/Export.h"
#include "Family.h"

namespace corvane {

/// A line of the manifest, which is a JSON object: what a member is to be, and then what was made.
///
/// What a member is to be: the beginning of its line, up to and without the comma. `synthex sweep --list
/// --json` prints it with a brace. `settings` is the text of the member's settings. Any thread, as for all
/// functions here.
std::string EntryStart(const Family& family, const Member& member, const std::string& settings);

/// The whole line of a member that was made, whose output has that hash.
std::string EntryOf(const Family& family, const Member& member, const Clip& clip, const ExportReport& report,
                    const FilesHash& output);

/// The line if it tells of the member as it is to be; empty if that was made by other settings or options. A
/// line in which the member is only described in another way is brought up to date.
std::optional<std::string> AcceptedEntry(const std::string& line, const Family& family, const Member& member);

/// What must be there of a line.
struct MadeMember {
    std::string output; ///< from the folder, as the one below
    std::string settingsFile;
    ClipSettings settings;
    std::vector<std::filesystem::path> files; ///< of the output, from the folder
    std::uint64_t bytes = 0;                  ///< of all of them
    std::string hash;
    std::string pixels; ///< as in `ExportReport`, like the one below
    std::vector<ContentHash> frames;
    std::optional<FramesOfPart> part; ///< as in `MemberSpec`
};

/// Reads a line. Empty if it is none.
std::optional<MadeMember> ReadEntry(const std::string& line);

/// The output that a line tells of, without reading the rest of it. Empty if it is no line.
std::string OutputOfEntry(const std::string& line);

/// Reads a manifest line by line; `visit` gets those of members, and where they begin in the file. Returns
/// how many members the family has. Throws `Failure`, which names the file and the remedy, if it is no
/// manifest or of a newer version.
std::int64_t ReadManifest(const std::filesystem::path& manifest,
                          const std::function<void(std::string&& line, std::int64_t offset)>& visit);

/// What a manifest of a family of that many members has before its lines, which are separated by a comma and
/// a line's end, and behind them.
std::string ManifestStart(std::int64_t members);
inline constexpr char kManifestEnd[] = "\n]}\n";

} // namespace corvane
