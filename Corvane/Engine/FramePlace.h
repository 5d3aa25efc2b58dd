#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Clip.h"

namespace corvane {

/// A frame of a clip, as a person names it, or a time. What it is follows from the clip's rate.
struct FramePlace {
    enum class Kind : std::uint8_t {
        kNumber,   ///< of the frame, from 0
        kTime,     ///< of the clip, in nanoseconds
        kTimecode, ///< whose frames are counted at the rate rounded up; frame 0 has 00:00:00:00
        kDropTimecode,
    };
    Kind kind = Kind::kNumber;
    std::int64_t number = 0;              ///< the frame, the nanoseconds, or the whole minutes of a timecode
    std::int64_t seconds = 0, frames = 0; ///< the rest of a timecode

    bool operator==(const FramePlace&) const = default;
};

/// Frames of a clip as a person names them.
struct FrameSpan {
    FramePlace first;
    std::optional<FramePlace> last; ///< none: the first alone
};

/// Reads one frame: a number, a time (`2.5s`, `1:05.2`, `0:01:05`) or a timecode (`00:00:05:12`, with a
/// semicolon before the frames if it drops numbers). Empty if `text` is none of that. Any thread.
std::optional<FramePlace> ReadFramePlace(std::string_view text);

/// What `ReadFramePlace` reads, as the end of a sentence "write ...".
inline constexpr char kFramePlaceForms[] =
    "a number from 0, a time such as 2.5s or 0:01:05, or a timecode such as 00:00:05:12";

/// The frame of a clip that is named or that is shown then; it may lie beyond the clip's end. Throws
/// `UsageFailure`, which names `clip` and the remedy, if the clip has no rate or no such timecode. Any
/// thread.
std::int64_t FrameOf(const FramePlace& place, const Clip& clip);

/// The timecode of a frame, "00:00:05:12"; with a semicolon before the frames at 30000/1001 frames a second
/// and its multiples, where numbers are dropped (SMPTE ST 12-1). Empty without a rate. Any thread.
std::string TimecodeText(std::int64_t frame, std::int64_t ticksPerFrame);

/// Reads FIRST:LAST or one number; a time (`2.5s`, `1:05.2`, `0:01:05`) or a timecode (`00:00:05:12`, with a
/// semicolon before the frames if it drops numbers); or two of these with a hyphen between. `0:05` by itself
/// is the frames 0 to 5. Empty if `text` is none of that. Any thread.
std::optional<FrameSpan> ReadFrameSpan(std::string_view text);

/// What `ReadFrameSpan` reads, as the end of a sentence "write ...".
inline constexpr char kFrameSpanForms[] =
    "FIRST:LAST (both included, from 0), one number, a time such as 2.5s or 0:01:05, a timecode such as "
    "00:00:05:12, or two of these with a hyphen between, such as 0:05-0:10";

/// The first and last frame, both included, that a span means in a clip. A time is the frame that is shown
/// then; at the end of a span it is the last frame that begins before, so that 0:05-0:10 lasts five seconds.
/// They may lie beyond the clip's end. Throws `UsageFailure`, which names `clip` and the remedy, if the clip
/// has no rate, no such timecode, or if the last lies before the first. Any thread.
std::pair<std::int64_t, std::int64_t> FramesOf(const FrameSpan& span, const Clip& clip);

} // namespace corvane
