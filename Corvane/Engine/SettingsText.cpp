#include "SettingsText.h"

#include <type_traits>
#include <utility>

#include "SettingsMembers.h"
#include "lumcore.h"

namespace corvane {

namespace {

using namespace lumcore::serialization;

/// The member of that name; empty if there is none.
ValuePtr MemberOf(const ValuePtr& value, const char* key) {
    const auto* const object = boost::any_cast<Object>(value.get());
    return object ? GetVariantInObject(*object, key) : ValuePtr();
}

/// Takes the number over, the low bits of one that is too large. Integers pass for a color's floats, but not
/// the other way round.
template <class Number>
void Take(const Value& value, Number& number) {
    if (const auto* const natural = boost::any_cast<std::uint64_t>(&value))
        number = static_cast<Number>(*natural);
    else if (const auto* const integer = boost::any_cast<std::int64_t>(&value))
        number = static_cast<Number>(*integer);
    else if (const auto* const real = boost::any_cast<double>(&value); real && kIsFraction<Number>)
        number = static_cast<Number>(*real);
}

template <class Number>
Value JSONOf(Number number) {
    if constexpr (kIsFraction<Number>) return static_cast<double>(number);
    if constexpr (std::is_unsigned_v<Number>) return static_cast<std::uint64_t>(number);
    return static_cast<std::int64_t>(number);
}

} // namespace

ClipSettings ReadSettings(const std::string& text) {
    ValuePtr tree = JSONParse(reinterpret_cast<const unsigned char*>(text.c_str()));
    if (const ValuePtr wrapped = MemberOf(tree, kSettingsWrapper)) tree = wrapped;
    ClipSettings settings;
    VisitMembers(settings, [&](const SettingsMember& place, auto& member) {
        ValuePtr value = MemberOf(tree, place.key);
        if (place.part != nullptr && value) {
            member = {}; // of an object that is there, a missing part is 0
            value = MemberOf(value, place.part);
        }
        if (value) Take(*value, member);
    });
    return settings;
}

bool IsOpaque(const ClipSettings& settings) {
    const auto isOpaque = [](const SettingsColor& color) { return color[3] >= 1; };
    if (settings.renderFormat == 0)
        return isOpaque(settings.upper) && (settings.fieldType == 0 || isOpaque(settings.lower));
    return isOpaque(settings.topStart) && isOpaque(settings.topEnd) && isOpaque(settings.bottomStart) &&
           isOpaque(settings.bottomEnd);
}

std::string WriteSettings(const ClipSettings& settings) {
    Value tree = Object();
    const auto& members = boost::any_cast<const Object&>(tree);
    VisitMembers(settings, [&](const SettingsMember& place, auto member) {
        if (place.part == nullptr) return AddToObject(tree, place.key, JSONOf(member));
        if (!GetVariantInObject(members, place.key)) AddToObject(tree, place.key, Value(Object()));
        AddToObject(*GetVariantInObject(members, place.key), place.part, JSONOf(member));
    });
    return GetJSONUTF8String(tree, false);
}

} // namespace corvane
