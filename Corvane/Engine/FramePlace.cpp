#include "FramePlace.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Failure.h"
#include "NumberPair.h"
#include "lummediatypes.h"

namespace corvane {

namespace {

using Kind = FramePlace::Kind;
using lummediatypes::kTicksPerSecond;

constexpr std::int64_t kBillion = 1000000000;
constexpr std::size_t kDecimals = 9; // of a second

/// A whole number of digits alone, small enough to be reckoned with.
std::optional<std::int64_t> ReadDigits(std::string_view text) {
    constexpr std::size_t kMostDigits = 12;
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isAll = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isAll && number >= 0 && text.size() <= kMostDigits ? std::optional(number) : std::nullopt;
}

/// Seconds with decimals or without, in nanoseconds.
std::optional<std::int64_t> ReadSeconds(std::string_view text) {
    const std::size_t point = text.find('.');
    const auto whole = ReadDigits(text.substr(0, point));
    if (!whole || *whole >= kBillion) return std::nullopt;
    if (point == std::string_view::npos) return *whole * kBillion;
    std::string decimals(text.substr(point + 1));
    if (decimals.empty() || decimals.size() > kDecimals) return std::nullopt;
    decimals.resize(kDecimals, '0');
    const auto rest = ReadDigits(decimals);
    return rest ? std::optional(*whole * kBillion + *rest) : std::nullopt;
}

/// A number below 60, of two digits.
std::optional<std::int64_t> ReadSixty(std::string_view text) {
    const auto number = ReadDigits(text);
    return number && *number < 60 && text.size() == 2 ? number : std::nullopt;
}

std::optional<FramePlace> ReadTime(const std::vector<std::string_view>& parts) {
    // The part before the last is minutes, and what stands before it is hours.
    constexpr std::int64_t kMinute = 60 * kBillion;
    const std::string_view last = parts.back();
    const auto seconds = ReadSeconds(last);
    if (!seconds || *seconds >= kMinute || last.substr(0, last.find('.')).size() != 2) return std::nullopt;
    const auto minutes = parts.size() == 3 ? ReadSixty(parts[1]) : ReadDigits(parts[0]);
    const auto hours = parts.size() == 3 ? ReadDigits(parts[0]) : std::optional<std::int64_t>(0);
    constexpr std::int64_t kMost = 1000000; // a century of hours
    if (!minutes || !hours || *minutes > kMost || *hours > kMost) return std::nullopt;
    return FramePlace{Kind::kTime, (*hours * 60 + *minutes) * kMinute + *seconds};
}

std::optional<FramePlace> ReadTimecode(const std::vector<std::string_view>& parts, bool drops) {
    const auto hours = ReadDigits(parts[0]), minutes = ReadSixty(parts[1]), seconds = ReadSixty(parts[2]);
    const auto frames = ReadDigits(parts[3]);
    constexpr std::int64_t kMost = 1000000;
    if (!hours || !minutes || !seconds || !frames || *hours > kMost || *frames > kMost) return std::nullopt;
    return FramePlace{drops ? Kind::kDropTimecode : Kind::kTimecode, *hours * 60 + *minutes, *seconds,
                      *frames};
}

} // namespace

std::optional<FramePlace> ReadFramePlace(std::string_view word) {
    if (const auto number = ReadDigits(word)) return FramePlace{Kind::kNumber, *number};
    if (word.ends_with('s')) {
        const auto time = ReadSeconds(word.substr(0, word.size() - 1));
        return time ? std::optional(FramePlace{Kind::kTime, *time}) : std::nullopt;
    }
    const bool drops = word.find(';') != std::string_view::npos;
    std::vector<std::string_view> parts;
    for (std::size_t at = 0;;) {
        const std::size_t end = word.find_first_of(":;", at);
        parts.push_back(word.substr(at, end - at));
        if (end == std::string_view::npos) break;
        // A semicolon stands before the frames alone.
        if (word[end] == ';' && parts.size() != 3) return std::nullopt;
        at = end + 1;
    }
    if (parts.size() == 4) return ReadTimecode(parts, drops);
    return !drops && (parts.size() == 2 || parts.size() == 3) ? ReadTime(parts) : std::nullopt;
}

namespace {

// Frames that timecodes count in a second.
std::int64_t NominalRate(std::int64_t ticksPerFrame) {
    return kTicksPerSecond / ticksPerFrame + (kTicksPerSecond % ticksPerFrame != 0);
}

// Numbers that they drop in each minute but every tenth; 0 if they drop none at this rate.
std::int64_t DroppedAMinute(std::int64_t ticksPerFrame) {
    constexpr std::int64_t kBase = 30;
    const std::int64_t nominal = NominalRate(ticksPerFrame);
    const bool drops = nominal % kBase == 0 && static_cast<__int128>(ticksPerFrame) * nominal * 1000 ==
                                                   static_cast<__int128>(kTicksPerSecond) * 1001;
    return drops ? 2 * nominal / kBase : 0;
}

[[noreturn]] void Fail(const Clip& clip, const std::string& what) {
    throw UsageFailure(fmt::format("{}: {}.", clip.Name(), what));
}

std::int64_t FrameOfTimecode(const FramePlace& place, const Clip& clip) {
    const std::int64_t nominal = NominalRate(clip.Info().ticksPerFrame);
    const std::string said =
        fmt::format("{:02}:{:02}:{:02}{}{:02}", place.number / 60, place.number % 60, place.seconds,
                    place.kind == Kind::kTimecode ? ':' : ';', place.frames);
    if (place.frames >= nominal)
        Fail(clip, fmt::format("there is no timecode {}; its frames are counted from 00 to {:02}", said,
                               nominal - 1));
    const std::int64_t counted = (place.number * 60 + place.seconds) * nominal + place.frames;
    if (place.kind == Kind::kTimecode) return counted;
    const std::int64_t dropped = DroppedAMinute(clip.Info().ticksPerFrame);
    if (dropped == 0)
        Fail(clip, "timecodes drop numbers at 30000/1001 frames a second and its multiples alone; write " +
                       std::string("colons, no semicolon"));
    if (place.number % 10 != 0 && place.seconds == 0 && place.frames < dropped)
        Fail(clip,
             fmt::format("there is no timecode {}, which is a dropped number; write the next one", said));
    return counted - dropped * (place.number - place.number / 10);
}

/// The frame that is shown at a time; of an end the last one that begins before.
std::int64_t FrameAt(std::int64_t nanoseconds, std::int64_t ticksPerFrame, bool isEnd) {
    const __int128 time = static_cast<__int128>(nanoseconds) * kTicksPerSecond;
    const __int128 frame = static_cast<__int128>(ticksPerFrame) * kBillion;
    const __int128 number = isEnd && time > 0 ? (time - 1) / frame : time / frame;
    return static_cast<std::int64_t>(std::min<__int128>(number, std::numeric_limits<std::int64_t>::max()));
}

std::int64_t ResolveFrame(const FramePlace& place, const Clip& clip, bool isEnd) {
    if (place.kind == Kind::kNumber) return place.number;
    if (clip.Info().ticksPerFrame <= 0) Fail(clip, clip.WhyNotRenderable());
    if (place.kind == Kind::kTime) return FrameAt(place.number, clip.Info().ticksPerFrame, isEnd);
    return FrameOfTimecode(place, clip);
}

} // namespace

std::int64_t FrameOf(const FramePlace& place, const Clip& clip) {
    return ResolveFrame(place, clip, false);
}

std::string TimecodeText(std::int64_t frame, std::int64_t ticksPerFrame) {
    if (ticksPerFrame <= 0) return {};
    const std::int64_t nominal = NominalRate(ticksPerFrame), dropped = DroppedAMinute(ticksPerFrame);
    // In ten minutes all but the first drop numbers.
    const std::int64_t minute = nominal * 60 - dropped, tenMinutes = minute * 10 + dropped;
    const std::int64_t rest = frame % tenMinutes;
    const std::int64_t minutes = rest < dropped ? 0 : (rest - dropped) / minute;
    const std::int64_t number = frame + dropped * (frame / tenMinutes * 9 + minutes),
                       seconds = number / nominal;
    return fmt::format("{:02}:{:02}:{:02}{}{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60,
                       dropped == 0 ? ':' : ';', number % nominal);
}

std::optional<FrameSpan> ReadFrameSpan(std::string_view text) {
    if (const auto pair = ReadPair(text, {':', 0, std::numeric_limits<std::int64_t>::max(), true})) {
        const std::int64_t last = pair->second.value_or(pair->first);
        if (last < pair->first) return std::nullopt;
        return FrameSpan{{Kind::kNumber, pair->first}, FramePlace{Kind::kNumber, last}};
    }
    const std::size_t hyphen = text.find('-');
    const auto first = ReadFramePlace(text.substr(0, hyphen));
    if (!first) return std::nullopt;
    if (hyphen == std::string_view::npos) return FrameSpan{*first, std::nullopt};
    const auto last = ReadFramePlace(text.substr(hyphen + 1));
    if (!last || (last->kind == first->kind && last->number < first->number)) return std::nullopt;
    return FrameSpan{*first, last};
}

std::pair<std::int64_t, std::int64_t> FramesOf(const FrameSpan& span, const Clip& clip) {
    const std::int64_t first = ResolveFrame(span.first, clip, false);
    const std::int64_t last = span.last ? ResolveFrame(*span.last, clip, true) : first;
    if (last < first)
        Fail(clip, fmt::format("the frames would end with {}, before they begin with {}; name a later end",
                               last, first));
    return {first, last};
}

} // namespace corvane
