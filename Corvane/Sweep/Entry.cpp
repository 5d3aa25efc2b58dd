#include "Entry.h"

#include <fstream>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Engine/ClipFacts.h"
#include "Engine/Failure.h"
#include "Export/Files/NumberedName.h"
#include "Export/Targets/ExportKinds.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using JSON = nlohmann::ordered_json;

constexpr int kVersion = 1;
constexpr std::string_view kOutputKey = R"({"output":)";
constexpr std::string_view kStarts[] = {"{", "\"version\": ", "\"family\": ", "\"members\": ["};

JSON OrNull(const std::string& word) {
    return word.empty() ? JSON(nullptr) : JSON(word);
}

// The files of an output.
std::vector<fs::path> FilesOf(const MadeMember& made, const JSON& container) {
    const fs::path output = made.output;
    const std::string suffix = output.extension().string();
    const ExportKind* const kind = FindExportKind(container.is_string() ? container.get<std::string>()
                                                  : suffix.empty()      ? ""
                                                                        : suffix.substr(1));
    const auto numbered = kind != nullptr && kind->IsPicture() ? NumberedName::Parse(output) : std::nullopt;
    if (!numbered) return {output};
    const std::int64_t first = made.part ? made.part->first : 0;
    std::vector<fs::path> files;
    for (std::int64_t i = 0; i < std::ssize(made.frames); ++i) files.push_back(numbered->For(first + i));
    return files;
}

std::optional<FramesOfPart> PartOf(const JSON& values) {
    const auto word = values.find("part");
    return word == values.end() ? std::nullopt : ReadPartWord(word->get<std::string>());
}

// The number behind a text that the line begins with; empty if it does not.
std::optional<std::int64_t> NumberBehind(const std::string& line, std::string_view start) {
    if (!line.starts_with(start)) return std::nullopt;
    const JSON number = JSON::parse(line.substr(start.size(), line.find(',') - start.size()), nullptr, false);
    return number.is_number_integer() ? std::optional(number.get<std::int64_t>()) : std::nullopt;
}

} // namespace

std::string EntryStart(const Family& family, const Member& member, const std::string& settings) {
    JSON start{{"output", member.output.string()}, {"settings_file", member.settingsFile.string()}};
    JSON& values = start["values"] = JSON::object();
    for (std::size_t i = 0; i < member.words.size(); ++i) values[family.Axes()[i]->name] = member.words[i];
    start["codec"] = OrNull(member.spec.codec);
    start["container"] = OrNull(member.spec.container);
    std::string text = start.dump();
    text.pop_back();
    return text + ",\"settings\":" + settings;
}

std::string EntryOf(const Family& family, const Member& member, const Clip& clip, const ExportReport& report,
                    const FilesHash& output) {
    JSON made{{"facts", ClipFacts(clip.Info())},
              {"bytes", output.bytes},
              {"md5", HashText(output.hash)},
              {"pixels", report.pixels},
              {"frames", JSON::array()}};
    for (const ContentHash& hash : report.frameHashes) made["frames"].push_back(HashText(hash));
    return EntryStart(family, member, WriteSettings(member.spec.settings)) + ',' + made.dump().substr(1);
}

std::optional<std::string> AcceptedEntry(const std::string& line, const Family& family,
                                         const Member& member) {
    const std::string start = EntryStart(family, member, WriteSettings(member.spec.settings));
    if (line.starts_with(start + ',') && line.ends_with('}')) return line;
    JSON older = JSON::parse(line, nullptr, false);
    const JSON wanted = JSON::parse(start + '}');
    if (!older.is_object()) return std::nullopt;
    for (const char* const key : {"output", "codec", "container", "settings"})
        if (older[key] != wanted[key]) return std::nullopt;
    JSON made = JSON::object();
    for (const char* const key : {"facts", "bytes", "md5", "pixels", "frames"}) made[key] = older[key];
    return start + ',' + made.dump().substr(1);
}

std::optional<MadeMember> ReadEntry(const std::string& line) {
    try {
        const JSON tree = JSON::parse(line);
        MadeMember made;
        made.output = tree.at("output").get<std::string>();
        made.settingsFile = tree.at("settings_file").get<std::string>();
        made.settings = ReadSettings(tree.at("settings").dump());
        made.part = PartOf(tree.at("values"));
        for (const JSON& text : tree.at("frames")) {
            const auto hash = ReadHash(text.get<std::string>());
            if (!hash) return std::nullopt;
            made.frames.push_back(*hash);
        }
        made.pixels = tree.at("pixels").get<std::string>();
        made.files = FilesOf(made, tree.at("container"));
        made.bytes = tree.at("bytes").get<std::uint64_t>();
        made.hash = tree.at("md5").get<std::string>();
        return made;
    } catch (const JSON::exception&) {
        return std::nullopt;
    }
}

std::string OutputOfEntry(const std::string& line) {
    if (!line.starts_with(kOutputKey)) return {};
    std::size_t end = kOutputKey.size() + 1;
    while (end < line.size() && line[end] != '"') end += line[end] == '\\' ? 2u : 1u;
    const JSON output =
        JSON::parse(line.substr(kOutputKey.size(), end + 1 - kOutputKey.size()), nullptr, false);
    return output.is_string() ? output.get<std::string>() : std::string();
}

std::int64_t ReadManifest(const fs::path& manifest,
                          const std::function<void(std::string&& line, std::int64_t offset)>& visit) {
    const auto fail = [&](const std::string& why) {
        throw Failure(fmt::format("{}: {}", manifest.string(), why));
    };
    std::ifstream file(manifest, std::ios::binary);
    if (!file) fail("there is no manifest that can be read; make the family first");
    std::string lines[std::size(kStarts)];
    for (std::string& line : lines) std::getline(file, line);
    const auto version = NumberBehind(lines[1], kStarts[1]);
    if (version && *version > kVersion)
        fail(fmt::format("this manifest is of version {}, and this program reads {}; use the newer program",
                         *version, kVersion));
    const auto members = NumberBehind(lines[2], kStarts[2]);
    if (lines[0] != kStarts[0] || !version || !members || lines[3] != kStarts[3])
        fail("this is no manifest as it was written here; choose another folder, or move the file away");
    std::string line;
    for (std::int64_t offset = file.tellg(); std::getline(file, line); offset = file.tellg()) {
        if (line.ends_with(',')) line.pop_back();
        if (line.starts_with(kOutputKey)) visit(std::move(line), offset);
    }
    return *members;
}

std::string ManifestStart(std::int64_t members) {
    return fmt::format("{}\n{}{},\n{}{},\n{}\n", kStarts[0], kStarts[1], kVersion, kStarts[2], members,
                       kStarts[3]);
}

} // namespace corvane
