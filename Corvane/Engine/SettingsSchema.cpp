#include <limits>

#include <nlohmann/json.hpp>

#include "ClipText.h"
#include "Services/Raster/PixelFormats.h"
#include "SettingsCheck.h"

namespace corvane {

namespace {

using JSON = nlohmann::ordered_json;

template <class Number>
JSON NumberSchema(const SettingsMember& member) {
    if (kIsFraction<Number>) {
        constexpr double kMost = std::numeric_limits<float>::max();
        return {{"type", "number"}, {"minimum", -kMost}, {"maximum", kMost}};
    }
    if (member.codes == SettingsCodes::kNone)
        return {{"type", "integer"}, {"minimum", member.least}, {"maximum", member.most}};
    JSON choices = JSON::array();
    for (const SettingsCode& code : CodesOf(member.codes))
        choices.push_back({{"const", code.number}, {"title", code.words}});
    return {{"type", "integer"}, {"oneOf", choices}};
}

} // namespace

std::vector<SettingsCode> CodesOf(SettingsCodes codes) {
    std::vector<SettingsCode> list;
    switch (codes) {
    case SettingsCodes::kNone: break;
    case SettingsCodes::kPixelFormats:
        for (const PixelFormatRow& row : PixelFormatTable())
            list.push_back({std::int64_t{row.code}, PixelFormatWords(row.code)});
        break;
    case SettingsCodes::kFieldTypes:
        for (std::int32_t type = 0; FieldOrderOf(type) != FieldOrder::kUnknown; ++type)
            list.push_back({type, FieldOrderText(FieldOrderOf(type))});
        break;
    case SettingsCodes::kRenderFormats: list = {{0, "field colors"}, {1, "gradient"}}; break;
    }
    return list;
}

nlohmann::ordered_json SchemaHead(const char* title) {
    return {{"$schema", "https://json-schema.org/draft/2020-12/schema"}, {"title", title}};
}

nlohmann::ordered_json ClosedObject(const nlohmann::ordered_json& properties) {
    JSON required = JSON::array();
    for (const auto& [key, schema] : properties.items()) required.push_back(key);
    return {{"type", "object"},
            {"properties", properties},
            {"required", required},
            {"additionalProperties", false}};
}

nlohmann::ordered_json SettingsSchema() {
    JSON keys = JSON::object(), parts = JSON::object();
    const ClipSettings settings;
    VisitMembers(settings, [&]<class Number>(const SettingsMember& member, const Number&) {
        const JSON number = NumberSchema<Number>(member);
        JSON& key = keys[member.key];
        key["description"] = member.about;
        if (member.part == nullptr)
            key.update(number);
        else
            parts[member.key][member.part] = number;
    });
    for (const auto& [key, properties] : parts.items()) keys[key].update(ClosedObject(properties));
    JSON schema = SchemaHead("The settings of a clip (.synthex)");
    schema["description"] = "Whole numbers are written without a fraction and without an exponent.";
    // Documents of the host's own serializer wrap the settings; keys beside the wrapper are passed over.
    schema["type"] = "object";
    schema["if"] = {{"required", {kSettingsWrapper}}};
    schema["then"] = {{"properties", {{kSettingsWrapper, {{"$ref", "#/$defs/settings"}}}}}};
    schema["else"] = {{"$ref", "#/$defs/settings"}};
    schema["$defs"]["settings"] = ClosedObject(keys);
    return schema;
}

} // namespace corvane
