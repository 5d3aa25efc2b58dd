#include "Plan.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Axes.h"
#include "Engine/Failure.h"
#include "Engine/SettingsCheck.h"
#include "Engine/TextFile.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using JSON = nlohmann::ordered_json;

constexpr std::int64_t kVersion = 1;

// The keys of a plan, with what its schema says of each.
constexpr struct {
    const char* name;
    const char* schema;
    bool required = false;
} kKeys[] = {
    {"version", "{}", true},
    {"base", R"({"type": "string", "description": "The settings file that members differ from"})", true},
    {"axes", R"({"type": "array", "description": "The last one changes fastest"})"},
    {"zip", R"({"type": "boolean",
                "description": "First values with first values, instead of all combinations"})"},
    {"output", R"({"type": "string", "description": "What outputs are called, with axes in braces"})", true},
    {"split", R"({"type": "integer", "minimum": 1,
                  "description": "How many parts the one clip of the family is made in"})"},
};
using Key = std::remove_cvref_t<decltype(kKeys[0])>;

fs::path Whole(const fs::path& path) {
    return fs::absolute(path).lexically_normal();
}

// The folder that relative paths of a plan begin at.
fs::path FolderOf(const fs::path& file) {
    return fs::absolute(file).parent_path();
}

std::string TextOf(const JSON& value, const char* what) {
    if (!value.is_string()) throw std::invalid_argument(fmt::format("{} is no text", what));
    return value.get<std::string>();
}

// What is missing reads as null.
const JSON& MemberOf(const JSON& object, const char* key) {
    static const JSON sNull;
    const auto found = object.find(key);
    return found != object.end() ? *found : sNull;
}

Plan::Axis AxisOf(const JSON& object) {
    if (!object.is_object()) throw std::invalid_argument("an axis is no object");
    Plan::Axis axis{TextOf(MemberOf(object, "name"), "the name of an axis"), {}};
    const JSON& values = MemberOf(object, "values");
    if (!values.is_array())
        throw std::invalid_argument(fmt::format("the axis {} has no list of values", axis.name));
    for (const JSON& value : values)
        axis.values.push_back(value.is_number_integer() ? value.dump() : TextOf(value, "a value"));
    return axis;
}

void CheckKeys(const JSON& tree) {
    if (!tree.is_object()) throw std::invalid_argument("it is no object");
    const JSON& version = MemberOf(tree, "version");
    if (!version.is_number_integer()) throw std::invalid_argument("it has no version");
    if (version.get<std::int64_t>() > kVersion)
        throw std::invalid_argument(
            fmt::format("it is of version {}, and this program reads {}; use the newer program",
                        version.dump(), kVersion));
    for (const auto& [key, value] : tree.items())
        if (std::ranges::find(kKeys, key, &Key::name) == std::end(kKeys)) {
            std::vector<std::string_view> names;
            for (const Key& row : kKeys) names.emplace_back(row.name);
            throw std::invalid_argument(
                fmt::format("there is no key '{}'; choose some of {}", key, fmt::join(names, ", ")));
        }
}

Plan PlanOf(const JSON& tree, const fs::path& folder) {
    CheckKeys(tree);
    Plan plan;
    plan.base = folder / TextOf(MemberOf(tree, "base"), "the base");
    plan.output = folder / TextOf(MemberOf(tree, "output"), "the output");
    const JSON& zip = MemberOf(tree, "zip");
    if (!zip.is_null() && !zip.is_boolean()) throw std::invalid_argument("zip is neither true nor false");
    plan.zip = zip.is_boolean() && zip.get<bool>();
    const JSON& split = MemberOf(tree, "split");
    if (!split.is_null()) plan.split = split.is_number_unsigned() ? split.get<std::int64_t>() : 0;
    if (!split.is_null() && plan.split < 1)
        throw std::invalid_argument("split is no number of parts above 0");
    const JSON& axes = MemberOf(tree, "axes");
    if (!axes.is_null() && !axes.is_array()) throw std::invalid_argument("the axes are no list");
    for (const JSON& axis : axes) plan.axes.push_back(AxisOf(axis));
    return plan;
}

} // namespace

Plan ReadPlan(const fs::path& file) {
    const std::string text = ReadTextFile(file);
    try {
        return PlanOf(JSON::parse(text), FolderOf(file));
    } catch (const JSON::exception& error) {
        throw Failure(fmt::format("{}: this is no plan: {}", file.string(), error.what()));
    } catch (const std::invalid_argument& error) {
        throw Failure(fmt::format("{}: this plan can't be used: {}", file.string(), error.what()));
    }
}

std::string SavePlan(const Plan& plan, const fs::path& file) {
    JSON tree{{"version", kVersion},
              {"base", StoredPath(Whole(plan.base), FolderOf(file)).string()},
              {"axes", JSON::array()}};
    for (const Plan::Axis& axis : plan.axes)
        tree["axes"].push_back({{"name", axis.name}, {"values", axis.values}});
    tree["zip"] = plan.zip;
    tree["output"] = StoredPath(Whole(plan.output), FolderOf(file)).string();
    if (plan.split != 0) tree["split"] = plan.split;
    try {
        return WriteTextFile(file, tree.dump(2) + "\n");
    } catch (const JSON::exception&) {
        throw Failure(
            fmt::format("{}: a name in the plan is not valid UTF-8; choose another one", file.string()));
    }
}

std::string PlanSchema() {
    JSON schema = SchemaHead("A plan of synthex sweep");
    schema["type"] = "object";
    schema["required"] = JSON::array();
    for (const Key& key : kKeys) {
        schema["properties"][key.name] = JSON::parse(key.schema);
        if (key.required) schema["required"].push_back(key.name);
    }
    schema["additionalProperties"] = false;
    schema["properties"]["version"] = {{"const", kVersion}};
    JSON names = JSON::array();
    for (const AxisRow& row : AxisTable()) names.push_back({{"const", row.name}, {"description", row.about}});
    const JSON values{{"type", "array"}, {"minItems", 1}, {"items", {{"type", {"string", "integer"}}}}};
    schema["properties"]["axes"]["items"] = ClosedObject({{"name", {{"oneOf", names}}}, {"values", values}});
    return schema.dump(2);
}

} // namespace corvane
