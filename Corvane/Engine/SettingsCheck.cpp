#include "SettingsCheck.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Services/Raster/PixelFormats.h"
#include "lumcore.h"

namespace corvane {

namespace {

using namespace lumcore::serialization;

/// How many characters have to be added, taken out or changed to make one text of the other.
std::size_t EditsBetween(std::string_view a, std::string_view b) {
    std::vector<std::size_t> edits(b.size() + 1);
    std::iota(edits.begin(), edits.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = edits[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] != b[j]);
            diagonal = edits[j + 1];
            edits[j + 1] = std::min({changed, diagonal + 1, edits[j] + 1});
        }
    }
    return edits.back();
}

/// What to do about a key that is none of `names`.
std::string RemedyFor(std::string_view key, const std::vector<std::string_view>& names) {
    constexpr std::size_t kMostEdits = 5, kLongest = 100;
    const auto edits = [&](std::string_view name) {
        return key.size() > kLongest ? kLongest : EditsBetween(key, name);
    };
    const auto nearest = std::ranges::min_element(names, {}, edits);
    if (edits(*nearest) <= std::min(kMostEdits, key.size() / 2)) return fmt::format("write \"{}\"", *nearest);
    return fmt::format("leave it out, or write one of {}", fmt::join(names, ", "));
}

/// The numbers that a member may have, for sentences.
std::string RemedyFor(const SettingsMember& member) {
    if (member.codes == SettingsCodes::kNone)
        return fmt::format("write a whole number from {} to {}", member.least, member.most);
    if (member.codes == SettingsCodes::kPixelFormats)
        return "write a code of 'synthex formats --json' as a decimal number";
    std::vector<std::string> choices;
    for (const SettingsCode& code : CodesOf(member.codes))
        choices.push_back(fmt::format("{} ({})", code.number, code.words));
    return fmt::format("write one of {}", fmt::join(choices, ", "));
}

class Check {
  public:
    std::vector<SettingsFinding> Run(const std::string& text);

  private:
    void Add(const std::string& key, const std::string& what) {
        mFindings.push_back({key, key.empty() ? what : fmt::format("\"{}\" {}", key, what)});
    }
    void FindUnknown(const Object& object, const std::string& prefix,
                     const std::vector<std::string_view>& names);
    void FindMissing(const Object& settings);
    template <class Number>
    void CheckMember(const Object& settings, const SettingsMember& member);
    template <class Number>
    void CheckNumber(const std::string& key, const SettingsMember& member, const Value& value);

    std::vector<SettingsFinding> mFindings;
};

/// What the parser of JSON says of a text, for sentences.
std::string WhyNoJSON(const std::string& text) {
    try {
        std::ignore = nlohmann::ordered_json::parse(text, [](int, auto, auto&) { return false; });
    } catch (const nlohmann::json::exception& error) {
        const std::string what = error.what();
        return fmt::format("it is no JSON ({})", what.substr(what.find("] ") + 2));
    }
    return fmt::format("it is no JSON that can be read: write no byte-order mark, no number over 1.8e308 and "
                       "no nesting deeper than {}",
                       kMaximumNesting);
}

void Check::FindUnknown(const Object& object, const std::string& prefix,
                        const std::vector<std::string_view>& names) {
    for (const auto& [bytes, value] : object) {
        const std::string key(bytes.begin(), bytes.end());
        if (std::ranges::find(names, key) == names.end())
            Add(prefix + key, "is unknown and passed over; " + RemedyFor(key, names));
    }
}

template <class Number>
void Check::CheckNumber(const std::string& key, const SettingsMember& member, const Value& value) {
    const auto* const natural = boost::any_cast<std::uint64_t>(&value);
    const auto* const integer = boost::any_cast<std::int64_t>(&value);
    if (kIsFraction<Number>) {
        const auto* const real = boost::any_cast<double>(&value);
        if (real != nullptr && std::isinf(static_cast<float>(*real)))
            Add(key, fmt::format("is {}, over what a color can have; write a smaller number", *real));
        else if (real == nullptr && natural == nullptr && integer == nullptr)
            Add(key, "is no number; write one, usually from 0 to 1");
        return;
    }
    if (natural == nullptr && integer == nullptr)
        return Add(key, "is no whole number without fraction and exponent; " + RemedyFor(member));
    const bool fits = natural == nullptr || *natural <= std::uint64_t{INT64_MAX};
    const std::int64_t number = natural != nullptr ? static_cast<std::int64_t>(*natural) : *integer;
    const std::string said = natural != nullptr ? std::to_string(*natural) : std::to_string(number);
    if (member.codes == SettingsCodes::kNone) {
        if (!fits || number < member.least || number > member.most)
            Add(key, fmt::format("is {}; {}", said, RemedyFor(member)));
    } else if (const auto codes = CodesOf(member.codes);
               !fits || std::ranges::find(codes, number, &SettingsCode::number) == codes.end()) {
        const bool isFormat = member.codes == SettingsCodes::kPixelFormats;
        const std::string code = PixelFormatHex(static_cast<CvPixelFormat>(number));
        Add(key, isFormat
                     ? fmt::format("is {} ({}), which is no pixel format; {}", said, code, RemedyFor(member))
                     : fmt::format("is {}, which is no such code; {}", said, RemedyFor(member)));
    }
}

template <class Number>
void Check::CheckMember(const Object& settings, const SettingsMember& member) {
    const ValuePtr value = GetVariantInObject(settings, member.key);
    if (!value) return;
    if (member.part == nullptr) return CheckNumber<Number>(member.key, member, *value);
    const auto* const object = boost::any_cast<Object>(value.get());
    if (object == nullptr) return;
    const std::string key = fmt::format("{}.{}", member.key, member.part);
    if (const ValuePtr part = GetVariantInObject(*object, member.part))
        CheckNumber<Number>(key, member, *part);
    else
        Add(key, "is missing and counts as 0; write it");
}

/// Finds keys that no settings have, keys that are missing, and what is no object.
void Check::FindMissing(const Object& settings) {
    // Keys in their order, with the names of their parts.
    std::vector<std::pair<const char*, std::vector<std::string_view>>> keys;
    const ClipSettings missing;
    VisitMembers(missing, [&](const SettingsMember& member, const auto&) {
        if (keys.empty() || keys.back().first != std::string_view(member.key))
            keys.push_back({member.key, {}});
        if (member.part != nullptr) keys.back().second.emplace_back(member.part);
    });
    std::vector<std::string_view> names;
    for (const auto& [key, parts] : keys) names.emplace_back(key);
    FindUnknown(settings, {}, names);
    const auto meant = nlohmann::ordered_json::parse(WriteSettings(missing));
    for (const auto& [key, parts] : keys) {
        const ValuePtr value = GetVariantInObject(settings, key);
        const auto* const inner = value ? boost::any_cast<Object>(value.get()) : nullptr;
        if (!value)
            Add(key, fmt::format("is missing and counts as {}; write it", meant.at(key).dump()));
        else if (inner != nullptr && !parts.empty())
            FindUnknown(*inner, fmt::format("{}.", key), parts);
        else if (!parts.empty())
            Add(key, fmt::format("is no object; write {{ \"{}\": ... }}", fmt::join(parts, "\": ..., \"")));
    }
}

std::vector<SettingsFinding> Check::Run(const std::string& text) {
    ValuePtr tree = JSONParse(reinterpret_cast<const unsigned char*>(text.c_str()));
    if (!tree) {
        Add({}, WhyNoJSON(text.substr(0, text.find('\0'))));
        return std::move(mFindings);
    }
    if (const auto* const outer = boost::any_cast<Object>(tree.get()))
        if (const ValuePtr inner = GetVariantInObject(*outer, kSettingsWrapper)) tree = inner;
    const auto* const object = boost::any_cast<Object>(tree.get());
    if (object == nullptr) {
        Add({}, "it is no object of settings; write keys and values in braces");
        return std::move(mFindings);
    }
    FindMissing(*object);
    const ClipSettings settings;
    VisitMembers(settings, [&]<class Number>(const SettingsMember& member, const Number&) {
        CheckMember<Number>(*object, member);
    });
    return std::move(mFindings);
}

} // namespace

std::vector<SettingsFinding> CheckSettings(const std::string& text) {
    return Check().Run(text);
}

} // namespace corvane
