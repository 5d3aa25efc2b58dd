/// What a clip is, in words for people: the same in the command line, the window and messages, whatever the
/// locale. All texts are ASCII. Any thread.
#pragma once

#include <cstdint>
#include <string>

#include "Clip.h"

namespace corvane {

/// "720 x 576".
std::string SizeText(Size size);

/// "12:11", "1:1 (square)", or "0:1 (none)" if a term is 0. In lowest terms.
std::string AspectText(PixelAspect aspect);

/// "progressive", "upper field first", "lower field first" or "interlaced (order unknown)".
std::string FieldOrderText(FieldOrder order);

/// "25 fps", "12.5 fps" or, if three decimals don't say it exactly, "29.97 fps (30000/1001)"; "none" if there
/// is no rate.
std::string RateText(Rate rate);

/// The time of a number of frames of so many ticks, neither below 0, as hours, minutes, seconds and
/// thousandths: "00:59:59.996". Exact, rounded down.
std::string TimeText(std::int64_t frames, std::int64_t ticksPerFrame);

/// "1 picture", "250 pictures" of a noun in the singular.
std::string CountText(std::int64_t count, const char* noun);

/// "1 frame", "250 frames".
std::string FramesText(std::int64_t frames);

/// "00:00:10.000 (250 frames)"; "none" if the clip's duration is not above 0.
std::string DurationText(const ClipInfo& info);

/// All but the duration in one line, as far as it is out of the ordinary: "720 x 576 (12:11), upper field
/// first, 25 fps" says the pixel aspect and the field order, "1920 x 1080, 24 fps" has square pixels and no
/// fields.
std::string FormatText(const ClipFormat& format);

/// The size, and the pixel aspect unless pixels are square: "720 x 576 (12:11)".
std::string ShapeText(const ClipFormat& format);

} // namespace corvane
