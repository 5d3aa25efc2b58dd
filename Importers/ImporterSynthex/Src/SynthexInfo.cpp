#include "SynthexInfo.h"

#include <stdexcept>

namespace lumcore::serialization {

using lummediatypes::FieldType;
using lummediatypes::FrameRate;
using lummediatypes::PixelAspectRatio;
using lummediatypes::TickTime;

namespace {

/// An integer of either kind that a parser may choose, as its 64 bits.
std::uint64_t IntegerBits(const Value& value) {
    if (const auto* const natural = boost::any_cast<std::uint64_t>(&value)) return *natural;
    if (const auto* const integer = boost::any_cast<std::int64_t>(&value))
        return static_cast<std::uint64_t>(*integer);
    throw boost::bad_any_cast();
}

/// Integers of at most 32 bits, enumerations among them: the low bits are taken, without a range check.
template <class T>
struct ConvertInteger {
    static Value ToJSON(T value) { return Value(std::uint64_t{static_cast<std::uint32_t>(value)}); }
    static T FromJSON(const Value& value) {
        return static_cast<T>(static_cast<std::uint32_t>(IntegerBits(value)));
    }
};

} // namespace

template <>
struct JSONConvert<std::uint32_t> : ConvertInteger<std::uint32_t> {};

template <>
struct JSONConvert<ContentRenderFormat> : ConvertInteger<ContentRenderFormat> {};

template <>
struct JSONConvert<FieldType> {
    static Value ToJSON(FieldType type) { return Value(std::int64_t{type}); }
    static FieldType FromJSON(const Value& value) {
        return static_cast<FieldType>(
            static_cast<std::int32_t>(static_cast<std::uint32_t>(IntegerBits(value))));
    }
};

template <>
struct JSONConvert<std::int64_t> {
    static Value ToJSON(std::int64_t value) { return Value(value); }
    static std::int64_t FromJSON(const Value& value) { return static_cast<std::int64_t>(IntegerBits(value)); }
};

template <>
struct JSONConvert<float> {
    static Value ToJSON(float value) { return Value(double{value}); }
    /// Values over the range of a float become infinite.
    static float FromJSON(const Value& value) {
        return static_cast<float>(JSONConvert<double>::FromJSON(value));
    }
};

namespace {

/// The object that a value holds. Throws `boost::bad_any_cast` if it holds anything else.
const Object& ObjectIn(const Value& value) {
    return boost::any_cast<const Object&>(value);
}

/// Reads one member. A missing one is what the type makes of nothing: 0, square pixels, opaque black.
template <class T>
T ExtractPropertyFromObject(const Object& object, const char* key) {
    const ValuePtr member = GetVariantInObject(object, key);
    return member ? JSONConvert<T>::FromJSON(*member) : T{};
}

template <class T>
void AddProperty(Value& object, const char* key, const T& value) {
    AddToObject(object, key, JSONConvert<T>::ToJSON(value));
}

/// Calls `visit(name, pointer to member)` for each field that has a JSON form, in the order of writing.
template <class Visitor>
void VisitFields(Visitor visit) {
#define SYNTHEX_FIELD(member) visit(#member, &SynthexInfo::member)
    SYNTHEX_FIELD(mPixelFormat);
    SYNTHEX_FIELD(mFrameWidth);
    SYNTHEX_FIELD(mFrameHeight);
    SYNTHEX_FIELD(mFramePAR);
    SYNTHEX_FIELD(mFieldType);
    SYNTHEX_FIELD(mRenderFormat);
    SYNTHEX_FIELD(mUpperFieldColor);
    SYNTHEX_FIELD(mLowerFieldColor);
    SYNTHEX_FIELD(mTopGradiantColorStart);
    SYNTHEX_FIELD(mTopGradiantColorEnd);
    SYNTHEX_FIELD(mBottomGradiantColorStart);
    SYNTHEX_FIELD(mBottomGradiantColorEnd);
    SYNTHEX_FIELD(mVideoDuration);
    SYNTHEX_FIELD(mVideoFrameRate);
#undef SYNTHEX_FIELD
}

/// The same for the parts of a color.
template <class Visitor>
void VisitParts(Visitor visit) {
    visit("mAlphaPart", &FloatColor::mAlphaPart);
    visit("mRedPart", &FloatColor::mRedPart);
    visit("mGreenPart", &FloatColor::mGreenPart);
    visit("mBluePart", &FloatColor::mBluePart);
}

} // namespace

double JSONConvert<double>::FromJSON(const Value& value) {
    if (const auto* const natural = boost::any_cast<std::uint64_t>(&value))
        return static_cast<double>(*natural);
    if (const auto* const integer = boost::any_cast<std::int64_t>(&value))
        return static_cast<double>(*integer);
    return boost::any_cast<double>(value);
}

Value JSONConvert<FloatColor>::ToJSON(const FloatColor& color) {
    Value object = Object();
    VisitParts([&](const char* key, auto part) { AddProperty(object, key, color.*part); });
    return object;
}

// Deliberate: a missing color is opaque black, but a color object that lacks only "mAlphaPart" is
// transparent.
FloatColor JSONConvert<FloatColor>::FromJSON(const Value& value) {
    FloatColor color;
    const Object& object = ObjectIn(value);
    VisitParts(
        [&](const char* key, auto part) { color.*part = ExtractPropertyFromObject<float>(object, key); });
    return color;
}

Value JSONConvert<PixelAspectRatio>::ToJSON(const PixelAspectRatio& ratio) {
    Value object = Object();
    AddProperty(object, "numerator", ratio.GetNumerator());
    AddProperty(object, "denominator", ratio.GetDenominator());
    return object;
}

PixelAspectRatio JSONConvert<PixelAspectRatio>::FromJSON(const Value& value) {
    const Object& object = ObjectIn(value);
    const auto numerator = ExtractPropertyFromObject<std::uint32_t>(object, "numerator");
    const auto denominator = ExtractPropertyFromObject<std::uint32_t>(object, "denominator");
    return PixelAspectRatio(numerator, denominator);
}

Value JSONConvert<TickTime>::ToJSON(const TickTime& time) {
    Value object = Object();
    AddProperty(object, "ticks", time.GetTicks());
    return object;
}

TickTime JSONConvert<TickTime>::FromJSON(const Value& value) {
    return TickTime(ExtractPropertyFromObject<std::int64_t>(ObjectIn(value), "ticks"));
}

Value JSONConvert<FrameRate>::ToJSON(const FrameRate& rate) {
    Value object = Object();
    AddProperty(object, "ticksperframe", rate.GetTicksPerFrame());
    return object;
}

FrameRate JSONConvert<FrameRate>::FromJSON(const Value& value) {
    return FrameRate(ExtractPropertyFromObject<std::int64_t>(ObjectIn(value), "ticksperframe"));
}

Value JSONConvert<SynthexInfo>::ToJSON(const SynthexInfo& info) {
    Value object = Object();
    VisitFields([&](const char* key, auto field) { AddProperty(object, key, info.*field); });
    return object;
}

SynthexInfo JSONConvert<SynthexInfo>::FromJSON(const Value& value) {
    SynthexInfo info;
    const Object& object = ObjectIn(value);
    VisitFields([&]<class T>(const char* key, T SynthexInfo::*field) {
        info.*field = ExtractPropertyFromObject<T>(object, key);
    });
    return info;
}

SynthexInfo Serializer<SynthexInfo>::FromUTF8String(const unsigned char* data, std::size_t size) {
    const bool terminated = size > 0 && data[size - 1] == 0;
    const ValuePtr parsed = terminated ? JSONParse(data) : JSONParse(data, size);
    if (!parsed) throw std::runtime_error("JSON not well-formed");
    // Documents of the host's generic serializer wrap the record.
    if (const auto* const object = boost::any_cast<Object>(parsed.get()))
        if (const ValuePtr wrapped = GetVariantInObject(*object, "SerializerWrappedObject"))
            return JSONConvert<SynthexInfo>::FromJSON(*wrapped);
    return JSONConvert<SynthexInfo>::FromJSON(*parsed);
}

} // namespace lumcore::serialization
