#include "Axes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "Engine/NumberPair.h"
#include "Export/Targets/ExportKinds.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/Raster/PixelFormats.h"
#include "lummediatypes.h"

namespace corvane {
namespace {

using lummediatypes::kTicksPerSecond;

constexpr std::int64_t kMost32 = std::numeric_limits<std::uint32_t>::max();

// A ratio of two whole numbers, or one of them if the other is 1.
std::string RatioText(std::int64_t numerator, std::int64_t denominator) {
    if (numerator <= 0 || denominator <= 0) return "none";
    const std::int64_t common = std::gcd(numerator, denominator);
    if (denominator == common) return std::to_string(numerator / common);
    return fmt::format("{}/{}", numerator / common, denominator / common);
}

// a * b / c; empty if it is no whole number of 64 bits.
std::optional<std::int64_t> WholeQuotient(std::int64_t a, std::int64_t b, std::int64_t c) {
    const __int128 product = static_cast<__int128>(a) * b;
    if (product % c != 0 || product / c > std::numeric_limits<std::int64_t>::max()) return std::nullopt;
    return static_cast<std::int64_t>(product / c);
}

std::string ReadName(std::string_view word, MemberSpec& spec) {
    if (word.empty()) return "write a name";
    spec.name = word;
    return {};
}

std::string WriteName(const MemberSpec& spec) {
    return spec.name;
}

std::string ReadSize(std::string_view word, MemberSpec& spec) {
    const auto pair = ReadPair(word, {'x', 1, kDefaultMaxFrameSide, false});
    if (!pair) return fmt::format("write WIDTHxHEIGHT, both from 1 to {}", kDefaultMaxFrameSide);
    spec.settings.size = {static_cast<std::uint32_t>(pair->first), static_cast<std::uint32_t>(*pair->second)};
    return {};
}

std::string WriteSize(const MemberSpec& spec) {
    return fmt::format("{}x{}", spec.settings.size.width, spec.settings.size.height);
}

std::string ReadAspect(std::string_view word, MemberSpec& spec) {
    const auto pair = ReadPair(word, {':', 1, kMost32, false});
    if (!pair) return "write N:D, both above 0, such as 16:15";
    spec.settings.aspect = {static_cast<std::uint32_t>(pair->first),
                            static_cast<std::uint32_t>(*pair->second)};
    return {};
}

std::string WriteAspect(const MemberSpec& spec) {
    const PixelAspect aspect = Reduced(spec.settings.aspect);
    return fmt::format("{}:{}", aspect.numerator, aspect.denominator);
}

std::string ReadRateWord(std::string_view word, MemberSpec& spec) {
    const auto pair = ReadRate(word);
    if (!pair) return "write N/D or one number, such as 30000/1001, 29.97 or 25";
    const auto ticks = WholeQuotient(kTicksPerSecond, *pair->second, pair->first);
    if (!ticks)
        return fmt::format(
            "choose a rate whose frames last a whole number of the {} ticks of a second, such as "
            "24000/1001, 25, 30000/1001 or 60",
            kTicksPerSecond);
    spec.settings.ticksPerFrame = *ticks;
    return {};
}

std::string WriteRate(const MemberSpec& spec) {
    return RatioText(kTicksPerSecond, spec.settings.ticksPerFrame);
}

constexpr struct {
    std::string_view word;
    std::int32_t fieldType;
} kFields[] = {{"progressive", lummediatypes::kFieldType_Progressive},
               {"upper", lummediatypes::kFieldType_UpperFirst},
               {"lower", lummediatypes::kFieldType_LowerFirst}};

std::string ReadFields(std::string_view word, MemberSpec& spec) {
    for (const auto& row : kFields)
        if (row.word == word) {
            spec.settings.fieldType = row.fieldType;
            return {};
        }
    return "choose progressive, upper or lower (the field that comes first)";
}

std::string WriteFields(const MemberSpec& spec) {
    for (const auto& row : kFields)
        if (row.fieldType == spec.settings.fieldType) return std::string(row.word);
    return "interlaced";
}

std::string ReadFormat(std::string_view word, MemberSpec& spec) {
    for (const PixelFormatRow& row : PixelFormatTable())
        if (word == PixelFormatCharacters(row.code) || word == row.name || word == ShortName(row)) {
            spec.settings.pixelFormat = row.code;
            return {};
        }
    std::vector<std::string> choices;
    for (const PixelFormatRow& row : PixelFormatTable()) choices.push_back(PixelFormatCharacters(row.code));
    return fmt::format("choose one of {}, or a name of `synthex formats`", fmt::join(choices, ", "));
}

std::string WriteFormat(const MemberSpec& spec) {
    const CvPixelFormat code = spec.settings.pixelFormat;
    return FindPixelFormat(code) != nullptr ? PixelFormatCharacters(code) : PixelFormatHex(code);
}

std::string ReadMode(std::string_view word, MemberSpec& spec) {
    if (word != "colors" && word != "gradient") return "choose colors or gradient";
    spec.settings.renderFormat = word == "gradient";
    return {};
}

std::string WriteMode(const MemberSpec& spec) {
    return spec.settings.renderFormat == 0 ? "colors" : "gradient";
}

// From #rrggbb or #rrggbbaa.
std::optional<SettingsColor> HexColor(std::string_view word) {
    std::uint32_t code = 0;
    const auto result = std::from_chars(word.data() + 1, word.data() + word.size(), code, 16);
    if ((word.size() != 7 && word.size() != 9) || result.ptr != word.data() + word.size())
        return std::nullopt;
    if (word.size() == 7) code = code << 8 | 0xFF;
    const auto part = [code](int shift) { return static_cast<float>(code >> shift & 0xFF) / 255; };
    return SettingsColor{part(8), part(16), part(24), part(0)};
}

// From R:G:B or R:G:B:A.
std::optional<SettingsColor> PartsColor(std::string_view word) {
    constexpr std::size_t kPlaces[] = {2, 1, 0, 3};
    SettingsColor color = kOpaqueBlack;
    for (std::size_t i = 0;; ++i) {
        const std::string_view part = word.substr(0, word.find(':'));
        float value = 0;
        const auto result = std::from_chars(part.data(), part.data() + part.size(), value);
        if (i == 4 || result.ec != std::errc() || result.ptr != part.data() + part.size() ||
            !std::isfinite(value))
            return std::nullopt;
        color[kPlaces[i]] = value;
        if (part.size() == word.size()) return i >= 2 ? std::optional(color) : std::nullopt;
        word.remove_prefix(part.size() + 1);
    }
}

template <SettingsColor ClipSettings::*Color>
std::string ReadColor(std::string_view word, MemberSpec& spec) {
    const auto color = word.starts_with('#') ? HexColor(word) : PartsColor(word);
    if (!color) return "write #RRGGBB, #RRGGBBAA, or parts from 0 to 1 as R:G:B or R:G:B:A";
    spec.settings.*Color = *color;
    return {};
}

template <SettingsColor ClipSettings::*Color>
std::string WriteColor(const MemberSpec& spec) {
    const SettingsColor& color = spec.settings.*Color;
    std::uint32_t codes[4]{};
    bool exact = true;
    for (std::size_t i = 0; i < 4; ++i) {
        codes[i] = static_cast<std::uint32_t>(std::clamp(std::round(color[i] * 255), 0.0f, 255.0f));
        exact = exact && static_cast<float>(codes[i]) / 255 == color[i];
    }
    if (!exact) {
        const std::string alpha = color[3] == 1 ? "" : fmt::format(":{}", color[3]);
        return fmt::format("{}:{}:{}{}", color[2], color[1], color[0], alpha);
    }
    const std::string alpha = codes[3] == 255 ? "" : fmt::format("{:02x}", codes[3]);
    return fmt::format("#{:02x}{:02x}{:02x}{}", codes[2], codes[1], codes[0], alpha);
}

// Seconds with up to six decimals, as ticks; all of these are whole numbers of them.
std::optional<std::int64_t> TicksOfSeconds(std::string_view word) {
    constexpr std::size_t kDecimals = 6;
    constexpr std::int64_t kMillion = 1000000;
    const std::size_t point = word.find('.');
    std::string digits(word.substr(0, point));
    std::string decimals(point == std::string_view::npos ? "" : word.substr(point + 1));
    if (digits.empty() || decimals.size() > kDecimals ||
        (point != std::string_view::npos && decimals.empty()))
        return std::nullopt;
    decimals.resize(kDecimals, '0');
    digits += decimals;
    const auto millionths = ReadPair(digits, {' ', 1, std::numeric_limits<std::int64_t>::max(), true});
    return millionths ? WholeQuotient(millionths->first, kTicksPerSecond / kMillion, 1) : std::nullopt;
}

std::string ReadDuration(std::string_view word, MemberSpec& spec) {
    std::optional<std::int64_t> ticks = TicksOfSeconds(word);
    if (const auto pair = ReadPair(word, {'/', 1, kMost32, false}))
        ticks = WholeQuotient(kTicksPerSecond, pair->first, *pair->second);
    if (!ticks) return "write seconds above 0, such as 10, 0.25 or 1001/30000";
    spec.settings.durationTicks = *ticks;
    return {};
}

std::string WriteDuration(const MemberSpec& spec) {
    const std::int64_t ticks = spec.settings.durationTicks;
    constexpr std::int64_t kMicrosecond = kTicksPerSecond / 1000000;
    if (ticks <= 0 || ticks % kMicrosecond != 0) return RatioText(ticks, kTicksPerSecond);
    std::string text =
        fmt::format("{}.{:06}", ticks / kTicksPerSecond, ticks % kTicksPerSecond / kMicrosecond);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::string ReadFrames(std::string_view word, MemberSpec& spec) {
    const auto frames = ReadPair(word, {' ', 1, std::numeric_limits<std::int32_t>::max(), true});
    const auto ticks =
        frames ? WholeQuotient(frames->first, std::max<std::int64_t>(spec.settings.ticksPerFrame, 0), 1)
               : std::nullopt;
    if (!ticks) return "write a number of frames above 0";
    spec.settings.durationTicks = *ticks;
    return {};
}

std::string WriteFrames(const MemberSpec& spec) {
    const ClipSettings& settings = spec.settings;
    if (settings.ticksPerFrame <= 0) return "none";
    return std::to_string(std::max<std::int64_t>(settings.durationTicks, 0) / settings.ticksPerFrame);
}

std::string ReadCodec(std::string_view word, MemberSpec& spec) {
    if (word.empty()) return fmt::format("choose {}, or any encoder of libav", ListCodecs());
    spec.codec = word;
    return {};
}

std::string WriteCodec(const MemberSpec& spec) {
    return spec.codec.empty() ? "usual" : spec.codec;
}

std::string ReadContainer(std::string_view word, MemberSpec& spec) {
    const bool isWord = !word.empty() && std::ranges::all_of(word, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '_';
    });
    if (!isWord) return fmt::format("choose {}, or any container of libav by its suffix", ListKinds());
    spec.container = word;
    return {};
}

std::string WriteContainer(const MemberSpec& spec) {
    return spec.container.empty() ? "usual" : spec.container;
}

std::string ReadPart(std::string_view word, MemberSpec& spec) {
    const auto part = ReadPartWord(word);
    if (!part) return "write FIRST:LAST, both included, from 0";
    spec.part = part;
    return {};
}

std::string WritePart(const MemberSpec& spec) {
    return spec.part ? fmt::format("{}:{}", spec.part->first, spec.part->second) : "all";
}

template <SettingsColor ClipSettings::*Color>
constexpr AxisRow ColorRow(const char* name, const char* about) {
    return {name, about, true, ReadColor<Color>, WriteColor<Color>};
}

constexpr AxisRow kRows[] = {
    {"name", "the clip's name, which is the base's unless it is varied", false, ReadName, WriteName},
    {"size", "width and height: 720x576", true, ReadSize, WriteSize},
    {"par", "pixel aspect ratio: 16:15", true, ReadAspect, WriteAspect},
    {"rate", "frames a second: 25, 30000/1001", true, ReadRateWord, WriteRate},
    {"fields", "progressive, upper, lower", true, ReadFields, WriteFields},
    {"format", "pixel format: bgra, v210", true, ReadFormat, WriteFormat},
    {"mode", "colors, gradient", true, ReadMode, WriteMode},
    ColorRow<&ClipSettings::upper>("upper", "color of the upper field, and of progressive clips: #ff8040"),
    ColorRow<&ClipSettings::lower>("lower", "color of the lower field: 1:0.5:0.25"),
    ColorRow<&ClipSettings::topStart>("top-start", "color of the gradient's top at the start"),
    ColorRow<&ClipSettings::topEnd>("top-end", "the same at the end"),
    ColorRow<&ClipSettings::bottomStart>("bottom-start", "color of the gradient's bottom at the start"),
    ColorRow<&ClipSettings::bottomEnd>("bottom-end", "the same at the end"),
    {"duration", "seconds: 10, 0.25", true, ReadDuration, WriteDuration},
    {"frames", "length as a number of frames, whatever the rate: 250", true, ReadFrames, WriteFrames},
    {"codec", "as of render: ffv1, prores:profile=4", false, ReadCodec, WriteCodec},
    {"container", "mov, mkv, y4m, png ...", false, ReadContainer, WriteContainer},
    {"part", "the frames to export: 0:99", false, ReadPart, WritePart},
};

} // namespace

std::span<const AxisRow> AxisTable() {
    return kRows;
}

const AxisRow* FindAxis(std::string_view name) {
    const auto* const found = std::ranges::find(kRows, name, &AxisRow::name);
    return found != std::end(kRows) ? found : nullptr;
}

std::optional<FramesOfPart> ReadPartWord(std::string_view word) {
    const auto pair = ReadPair(word, {':', 0, std::numeric_limits<std::int32_t>::max(), true});
    if (!pair) return std::nullopt;
    const std::int64_t last = pair->second.value_or(pair->first);
    return last < pair->first ? std::nullopt : std::optional(FramesOfPart(pair->first, last));
}

std::string ListAxes(bool ofClip) {
    std::string names;
    for (const AxisRow& row : kRows)
        if (row.ofClip || !ofClip) names += fmt::format("{}{}", names.empty() ? "" : ", ", row.name);
    return names;
}

} // namespace corvane
