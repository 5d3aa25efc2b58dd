#pragma once

#include <QString>

#include "Engine/Clip.h"

namespace corvane::desktop {

// What a clip is, in words for people, the same whatever the locale.

/// Width and height, and the pixel aspect ratio where pixels are not square.
QString SizeText(const ClipInfo& info);
/// Frames a second, to three decimals at most.
QString RateText(const ClipInfo& info);
QString FieldOrderText(const ClipInfo& info);
/// Time and number of frames.
QString DurationText(const ClipInfo& info);
/// Hours, minutes, seconds and thousandths of a number of ticks, rounded down.
QString TimeText(std::int64_t ticks);

} // namespace corvane::desktop
