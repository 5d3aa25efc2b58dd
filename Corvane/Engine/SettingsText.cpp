#include "SettingsText.h"

#include <iterator>
#include <type_traits>
#include <utility>

#include "lumcore.h"

namespace corvane {

namespace {

using namespace lumcore::serialization;

/// Calls `visit(key, part, member)` for every member of settings. A member with a part is one of an object's.
template <class Settings, class Visit>
void VisitMembers(Settings& settings, const Visit& visit) {
    const auto visitColor = [&](const char* key, auto& color) {
        constexpr const char* kParts[] = {"mBluePart", "mGreenPart", "mRedPart", "mAlphaPart"};
        for (std::size_t i = 0; i < std::size(kParts); ++i) visit(key, kParts[i], color[i]);
    };
    visit("mPixelFormat", nullptr, settings.pixelFormat);
    visit("mFrameWidth", nullptr, settings.size.width);
    visit("mFrameHeight", nullptr, settings.size.height);
    visit("mFramePAR", "numerator", settings.aspect.numerator);
    visit("mFramePAR", "denominator", settings.aspect.denominator);
    visit("mFieldType", nullptr, settings.fieldType);
    visit("mRenderFormat", nullptr, settings.renderFormat);
    visit("mVideoFrameRate", "ticksperframe", settings.ticksPerFrame);
    visit("mVideoDuration", "ticks", settings.durationTicks);
    visitColor("mUpperFieldColor", settings.upper);
    visitColor("mLowerFieldColor", settings.lower);
    // So they are spelled in all files.
    visitColor("mTopGradiantColorStart", settings.topStart);
    visitColor("mTopGradiantColorEnd", settings.topEnd);
    visitColor("mBottomGradiantColorStart", settings.bottomStart);
    visitColor("mBottomGradiantColorEnd", settings.bottomEnd);
}

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
    else if (const auto* const real = boost::any_cast<double>(&value); real && std::is_same_v<Number, float>)
        number = static_cast<Number>(*real);
}

template <class Number>
Value JSONOf(Number number) {
    if constexpr (std::is_floating_point_v<Number>) return static_cast<double>(number);
    if constexpr (std::is_unsigned_v<Number>) return static_cast<std::uint64_t>(number);
    return static_cast<std::int64_t>(number);
}

} // namespace

ClipSettings ReadSettings(const std::string& text) {
    ValuePtr tree = JSONParse(reinterpret_cast<const unsigned char*>(text.c_str()));
    if (const ValuePtr wrapped = MemberOf(tree, "SerializerWrappedObject")) tree = wrapped;
    ClipSettings settings;
    VisitMembers(settings, [&](const char* key, const char* part, auto& member) {
        ValuePtr value = MemberOf(tree, key);
        if (part != nullptr && value) {
            member = {}; // of an object that is there, a missing part is 0
            value = MemberOf(value, part);
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
    VisitMembers(settings, [&](const char* key, const char* part, auto member) {
        if (part == nullptr) return AddToObject(tree, key, JSONOf(member));
        if (!GetVariantInObject(members, key)) AddToObject(tree, key, Value(Object()));
        AddToObject(*GetVariantInObject(members, key), part, JSONOf(member));
    });
    return GetJSONUTF8String(tree, false);
}

} // namespace corvane
