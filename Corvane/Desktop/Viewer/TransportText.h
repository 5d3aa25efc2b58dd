#pragma once

#include <cstdint>

#include <QString>

namespace corvane::desktop {

/// The time of a frame as H:MM:SS.mmm, exact and rounded down; `ticksPerFrame` and the frame are not below 0.
QString TimeText(std::int64_t frame, std::int64_t ticksPerFrame);

/// A rate as the exact ratio: "30000/1001 fps", "25 fps". `ticksPerFrame` is above 0.
QString RateText(std::int64_t ticksPerFrame);

} // namespace corvane::desktop
