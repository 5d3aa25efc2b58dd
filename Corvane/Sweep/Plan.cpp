#include "Plan.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Engine/Failure.h"
#include "Engine/TextFile.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using JSON = nlohmann::ordered_json;

constexpr std::int64_t kVersion = 1;
constexpr const char* kKeys[] = {"version", "base", "axes", "zip", "output", "split"};

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
        if (std::ranges::find(kKeys, key) == std::end(kKeys))
            throw std::invalid_argument(
                fmt::format("there is no key '{}'; choose some of {}", key, fmt::join(kKeys, ", ")));
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

} // namespace corvane
