#include "ClipText.h"

#include <string>

#include <fmt/format.h>

#include "lummediatypes.h"

namespace corvane::desktop {

QString SizeText(const ClipInfo& info) {
    const std::string size = fmt::format("{} × {}", info.width, info.height);
    const bool square = info.parNumerator == info.parDenominator;
    return QString::fromStdString(
        square ? size : fmt::format("{} ({}:{})", size, info.parNumerator, info.parDenominator));
}

QString RateText(const ClipInfo& info) {
    if (info.ticksPerFrame <= 0) return QStringLiteral("none");
    const double rate =
        static_cast<double>(lummediatypes::kTicksPerSecond) / static_cast<double>(info.ticksPerFrame);
    std::string text = fmt::format("{:.3f}", rate);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return QString::fromStdString(text + " fps");
}

QString FieldOrderText(const ClipInfo& info) {
    using namespace lummediatypes;
    switch (info.fieldType) {
    case kFieldType_Progressive: return QStringLiteral("Progressive");
    case kFieldType_UpperFirst: return QStringLiteral("Upper first");
    case kFieldType_LowerFirst: return QStringLiteral("Lower first");
    default: return QStringLiteral("Interlaced (%1)").arg(info.fieldType);
    }
}

QString DurationText(const ClipInfo& info) {
    if (info.durationTicks <= 0) return QStringLiteral("none");
    return QStringLiteral("%1 (%2 frames)").arg(TimeText(info.durationTicks)).arg(info.frames);
}

QString TimeText(std::int64_t ticks) {
    constexpr std::int64_t kTicksPerThousandth = lummediatypes::kTicksPerSecond / 1000;
    const std::int64_t thousandths = ticks / kTicksPerThousandth;
    const std::int64_t seconds = thousandths / 1000;
    return QString::fromStdString(fmt::format("{}:{:02}:{:02}.{:03}", seconds / 3600, seconds / 60 % 60,
                                              seconds % 60, thousandths % 1000));
}

} // namespace corvane::desktop
