#include "TransportText.h"

#include <numeric>

#include <fmt/format.h>

#include "lummediatypes.h"

namespace corvane::desktop {

QString TimeText(std::int64_t frame, std::int64_t ticksPerFrame) {
    const unsigned __int128 ticks =
        static_cast<unsigned __int128>(frame) * static_cast<std::uint64_t>(ticksPerFrame);
    const auto seconds = static_cast<std::uint64_t>(ticks / lummediatypes::kTicksPerSecond);
    const auto rest = static_cast<std::uint64_t>(ticks % lummediatypes::kTicksPerSecond);
    return QString::fromStdString(fmt::format("{}:{:02}:{:02}.{:03}", seconds / 3600, seconds / 60 % 60,
                                              seconds % 60, rest * 1000 / lummediatypes::kTicksPerSecond));
}

QString RateText(std::int64_t ticksPerFrame) {
    const std::int64_t divisor = std::gcd(lummediatypes::kTicksPerSecond, ticksPerFrame);
    const QString frames = QString::number(lummediatypes::kTicksPerSecond / divisor);
    const std::int64_t seconds = ticksPerFrame / divisor;
    if (seconds == 1) return frames + QStringLiteral(" fps");
    return QStringLiteral("%1/%2 fps").arg(frames, QString::number(seconds));
}

} // namespace corvane::desktop
