#include "ProjectFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Failure.h"
#include "SettingsCheck.h"
#include "TextFile.h"
#include "lumcore.h"

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
    const auto format = tree.is_object() ? tree.find("format") : tree.end();
    if (format == tree.end() || *format != kFormatName) throw Damage{"it is no project"};
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

/// Whether a project has a member of that name anywhere.
bool IsRead(std::string_view key) {
    constexpr std::array<std::string_view, 7> kKeys{"format", "version", "sequence", "clips",
                                                    "name",   "file",    "settings"};
    bool read = std::ranges::find(kKeys, key) != kKeys.end();
    const ClipFormat sequence;
    VisitSequence(sequence, [&](const char* name, std::uint32_t) { read = read || key == name; });
    return read;
}

/// Makes a project from the parser's events. Of members that no project has it keeps nothing, and nothing
/// here recurses: however deep or large a text is, it costs no more than the project that comes out of it.
class ProjectReader {
  public:
    explicit ProjectReader(const fs::path& folder) : mFolder(folder) {}

    /// Reads all of `text`. Throws `Damage` if that is no project.
    Project Read(const std::string& text);

    // The parser's event interface; the names are the library's. A false return ends the parse.
    bool null() { return Add({}); }
    bool boolean(bool value) { return Add(value); }
    bool number_integer(std::int64_t value) { return Add(value); }
    bool number_unsigned(std::uint64_t value) { return Add(value); }
    bool number_float(double value, const std::string&) { return Add(value); }
    bool string(std::string& value) { return Add(std::move(value)); }
    bool binary(const Json::binary_t&) { return false; }
    bool start_object(std::size_t) { return Open(Json::object()); }
    bool start_array(std::size_t) { return Open(Json::array()); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }
    bool key(std::string& name) {
        mKey = std::move(name);
        return true;
    }
    bool parse_error(std::size_t position, const std::string&, const Json::exception&) {
        mDamage.reset();
        mPosition = position;
        return false;
    }

  private:
    bool Add(Json value) {
        Place(std::move(value));
        if (InClips()) TakeClip();
        return true;
    }

    bool Open(Json container) {
        if (mOpen.size() == lumcore::serialization::kMaximumNesting) {
            mDamage = {fmt::format("it nests deeper than {} levels", mOpen.size())};
            return false;
        }
        mOpen.push_back(Place(std::move(container)));
        return true;
    }

    bool Close() {
        mOpen.pop_back();
        if (InClips()) TakeClip();
        return true;
    }

    /// Whether the list of clips is what is open now.
    bool InClips() const { return mOpen.size() == 2 && mOpen.back() != nullptr && mOpen.back()->is_array(); }

    Json* Place(Json&& value);
    void TakeClip();

    const fs::path& mFolder;
    Project mProject;              // the clips so far
    Json mTop, mClip;              // the members read of the whole, and of the clip at hand
    std::vector<Json*> mOpen;      // the arrays and objects around; null if nobody reads what is in it
    std::string mKey;              // of the member that comes next
    std::optional<Damage> mDamage; // what was found first
    std::size_t mPosition = 0;     // of what is no JSON
};

/// Keeps a value where it will be looked for. Returns it if what is in it is to be kept, too.
Json* ProjectReader::Place(Json&& value) {
    const bool isObject = value.is_object();
    if (mOpen.empty()) {
        mTop = std::move(value);
        return isObject ? &mTop : nullptr;
    }
    if (InClips()) {
        mClip = std::move(value);
        return isObject ? &mClip : nullptr;
    }
    if (mOpen.back() == nullptr || !IsRead(mKey)) return nullptr;
    Json& member = (*mOpen.back())[mKey] = std::move(value);
    if (mOpen.size() > 1) return nullptr;
    if (mKey != "clips") return isObject ? &member : nullptr;
    // Of two lists the last one counts.
    mProject.clips.clear();
    mDamage.reset();
    return member.is_array() ? &member : nullptr;
}

/// Takes the clip over that was read last, unless an earlier one is damaged.
void ProjectReader::TakeClip() {
    if (mDamage) return;
    try {
        if (!mClip.is_object()) throw Damage{"a clip is no object"};
        mProject.Add(NeedText(mClip, "name"), ReadSource(mClip, mFolder));
    } catch (Damage& damage) {
        mDamage = std::move(damage);
    }
}

Project ProjectReader::Read(const std::string& text) {
    if (!Json::sax_parse(text, this))
        throw mDamage.value_or(Damage{
            fmt::format("it is cut or damaged at byte {} of {}; open a copy of it", mPosition, text.size())});
    CheckVersion(mTop);
    const Json& sequence = Need(mTop, "sequence");
    if (!sequence.is_object()) throw Damage{"\"sequence\" is no object"};
    VisitSequence(mProject.sequence,
                  [&](const char* key, std::uint32_t& member) { member = NeedNumber(sequence, key); });
    if (!Need(mTop, "clips").is_array()) throw Damage{"\"clips\" is no list"};
    if (mDamage) throw *mDamage;
    return std::move(mProject);
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
                        Quoted(source.IsFile() ? StoredPath(source.file, folder).string() : source.settings));
    }
    return fmt::format("{{\n  \"format\": \"{}\",\n  \"version\": {},\n  \"sequence\": {{\n{}\n  }},\n"
                       "  \"clips\": [{}{}{}]\n}}\n",
                       kFormatName, kVersion, sequence, clips.empty() ? "" : "\n", clips,
                       clips.empty() ? "" : "\n  ");
}

Project ReadProject(const std::string& text, const std::string& name, const fs::path& folder) {
    try {
        return ProjectReader(folder).Read(text);
    } catch (const Damage& damage) {
        throw Failure(fmt::format("{}: this project can't be read: {}.", name, damage.what));
    }
}

Project LoadProject(const fs::path& path) {
    return ReadProject(ReadTextFile(path), path.string(), fs::absolute(path).parent_path());
}

std::string SaveProject(const Project& project, const fs::path& path) {
    return WriteTextFile(path, WriteProject(project, fs::absolute(path).parent_path()));
}

nlohmann::ordered_json ProjectSchema() {
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    const Json text{{"type", "string"}};
    Json sequence = ClosedObject(Json::object()), clip = ClosedObject({{"name", text}});
    const ClipFormat usual;
    VisitSequence(usual, [&](const char* key, std::uint32_t) {
        sequence["properties"][key] = {{"type", "integer"}, {"minimum", 0}, {"maximum", kMost}};
        sequence["required"].push_back(key);
    });
    sequence["description"] = "What new clips begin with: a rate of scale / sampleSize frames a second";
    clip["properties"]["file"] = {
        {"type", "string"}, {"minLength", 1}, {"description", "A settings file, from the project's folder"}};
    clip["properties"]["settings"] = {{"type", "string"},
                                      {"contentMediaType", "application/json"},
                                      {"description", "The text of settings that have no file"}};
    clip["oneOf"] = {{{"required", {"file"}}}, {{"required", {"settings"}}}};
    Json schema = SchemaHead("A project (.cvproj)");
    schema.update(ClosedObject({{"format", {{"const", kFormatName}}},
                                {"version", {{"const", kVersion}}},
                                {"sequence", sequence},
                                {"clips", {{"type", "array"}, {"items", clip}}}}));
    return schema;
}

} // namespace corvane
