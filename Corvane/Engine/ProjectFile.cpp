#include "ProjectFile.h"

#include <cstdint>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Failure.h"
#include "TextFile.h"

namespace corvane {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr char kFormatName[] = "corvane-project";
constexpr std::uint64_t kVersion = 1;

/// Calls `visit(key, member)` for what a project keeps of its sequence's format.
template <class Format, class Visit>
void VisitSequence(Format& sequence, const Visit& visit) {
    visit("width", sequence.size.width);
    visit("height", sequence.size.height);
    visit("parNumerator", sequence.aspect.numerator);
    visit("parDenominator", sequence.aspect.denominator);
    visit("scale", sequence.rate.scale);
    visit("sampleSize", sequence.rate.sampleSize);
}

/// The path from `folder` if the file lies in it or below it, else the whole path.
fs::path Stored(const fs::path& file, const fs::path& folder) {
    if (folder.empty()) return file;
    const fs::path relative = file.lexically_relative(folder.lexically_normal());
    return relative.empty() || *relative.begin() == ".." ? file : relative;
}

/// What is not as a project of this version has it. Ends up in a sentence with the project's name.
struct Damage {
    std::string what;
};

/// The member of an object, which must have it.
const Json& Need(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end()) throw Damage{fmt::format("\"{}\" is missing", key)};
    return *found;
}

std::string NeedText(const Json& object, const char* key) {
    const Json& member = Need(object, key);
    if (!member.is_string()) throw Damage{fmt::format("\"{}\" is no text", key)};
    return member.get<std::string>();
}

std::uint32_t NeedNumber(const Json& object, const char* key) {
    const Json& member = Need(object, key);
    if (!member.is_number_unsigned() ||
        member.get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max())
        throw Damage{fmt::format("\"{}\" is no number from 0 to 4294967295", key)};
    return member.get<std::uint32_t>();
}

void CheckVersion(const Json& tree) {
    if (!tree.is_object() || tree.value("format", Json()) != kFormatName) throw Damage{"it is no project"};
    const Json& version = Need(tree, "version");
    if (!version.is_number_unsigned() || version.get<std::uint64_t>() == 0)
        throw Damage{"\"version\" is no number from 1"};
    if (version.get<std::uint64_t>() > kVersion)
        throw Damage{
            fmt::format("a newer Synthex made it (version {} of the format, this one knows {}); update "
                        "Synthex to open it",
                        version.dump(), kVersion)};
}

ClipSource ReadSource(const Json& clip, const fs::path& folder) {
    if (!clip.contains("file")) return {.file = {}, .settings = NeedText(clip, "settings")};
    const fs::path file = NeedText(clip, "file");
    if (file.empty()) throw Damage{"\"file\" is empty"};
    return {.file = (folder / file).lexically_normal(), .settings = {}};
}

Project ReadTree(const Json& tree, const fs::path& folder) {
    CheckVersion(tree);
    Project project;
    const Json& sequence = Need(tree, "sequence");
    if (!sequence.is_object()) throw Damage{"\"sequence\" is no object"};
    VisitSequence(project.sequence,
                  [&](const char* key, std::uint32_t& member) { member = NeedNumber(sequence, key); });
    const Json& clips = Need(tree, "clips");
    if (!clips.is_array()) throw Damage{"\"clips\" is no list"};
    for (const Json& clip : clips) {
        if (!clip.is_object()) throw Damage{"a clip is no object"};
        project.Add(NeedText(clip, "name"), ReadSource(clip, folder));
    }
    return project;
}

/// A text as JSON has it. Throws `Failure` if it is not valid UTF-8.
std::string Quoted(const std::string& text) {
    try {
        return Json(text).dump();
    } catch (const Json::type_error&) {
        throw Failure("The project has a clip whose name or path is not valid UTF-8; rename its file.");
    }
}

} // namespace

// Written without a tree: one can't be destroyed without memory, and would end the program where it is short.
std::string WriteProject(const Project& project, const fs::path& folder) {
    std::string sequence, clips;
    VisitSequence(project.sequence, [&](const char* key, std::uint32_t member) {
        sequence += fmt::format("{}    \"{}\": {}", sequence.empty() ? "" : ",\n", key, member);
    });
    for (const auto& clip : project.clips) {
        const ClipSource& source = clip->source;
        clips +=
            fmt::format("{}    {{\n      \"name\": {},\n      \"{}\": {}\n    }}", clips.empty() ? "" : ",\n",
                        Quoted(clip->name), source.IsFile() ? "file" : "settings",
                        Quoted(source.IsFile() ? Stored(source.file, folder).string() : source.settings));
    }
    return fmt::format("{{\n  \"format\": \"{}\",\n  \"version\": {},\n  \"sequence\": {{\n{}\n  }},\n"
                       "  \"clips\": [{}{}{}]\n}}\n",
                       kFormatName, kVersion, sequence, clips.empty() ? "" : "\n", clips,
                       clips.empty() ? "" : "\n  ");
}

Project ReadProject(const std::string& text, const std::string& name, const fs::path& folder) {
    try {
        return ReadTree(Json::parse(text), folder);
    } catch (const Json::parse_error& error) {
        throw Failure(fmt::format("{}: this project is cut or damaged at byte {} of {}; open a copy of it.",
                                  name, error.byte, text.size()));
    } catch (const Damage& damage) {
        throw Failure(fmt::format("{}: this project can't be read: {}.", name, damage.what));
    }
}

Project LoadProject(const fs::path& path) {
    return ReadProject(ReadTextFile(path), path.string(), fs::absolute(path).parent_path());
}

void SaveProject(const Project& project, const fs::path& path) {
    WriteTextFile(path, WriteProject(project, fs::absolute(path).parent_path()));
}

} // namespace corvane
