#include "ClipText.h"

#include <fmt/format.h>

#include "lummediatypes.h"

namespace corvane {

namespace {

bool IsSquare(PixelAspect aspect) {
    return Reduced(aspect) == PixelAspect{1, 1};
}

} // namespace

std::string SizeText(Size size) {
    return fmt::format("{} x {}", size.width, size.height);
}

std::string AspectText(PixelAspect aspect) {
    if (aspect.numerator == 0 || aspect.denominator == 0)
        return fmt::format("{}:{} (none)", aspect.numerator, aspect.denominator);
    const auto [numerator, denominator] = Reduced(aspect);
    return fmt::format("{}:{}{}", numerator, denominator, IsSquare(aspect) ? " (square)" : "");
}

std::string FieldOrderText(FieldOrder order) {
    switch (order) {
    case FieldOrder::kProgressive: return "progressive";
    case FieldOrder::kUpperFirst: return "upper field first";
    case FieldOrder::kLowerFirst: return "lower field first";
    default: return "interlaced (order unknown)";
    }
}

std::string RateText(Rate rate) {
    if (rate.scale == 0 || rate.sampleSize == 0) return "none";
    std::string decimals = fmt::format("{:.3f}", static_cast<double>(rate.scale) / rate.sampleSize);
    decimals.erase(decimals.find_last_not_of('0') + 1);
    if (decimals.ends_with('.')) decimals.pop_back();
    const bool exact = std::uint64_t{rate.scale} * 1000 % rate.sampleSize == 0;
    return exact ? decimals + " fps" : fmt::format("{} fps ({}/{})", decimals, rate.scale, rate.sampleSize);
}

std::string TimeText(std::int64_t frames, std::int64_t ticksPerFrame) {
    constexpr auto kTicksPerSecond = static_cast<std::uint64_t>(lummediatypes::kTicksPerSecond);
    const auto ticks = static_cast<unsigned __int128>(frames) * static_cast<std::uint64_t>(ticksPerFrame);
    const auto seconds = static_cast<std::uint64_t>(ticks / kTicksPerSecond);
    const auto rest = static_cast<std::uint64_t>(ticks % kTicksPerSecond);
    return fmt::format("{:02}:{:02}:{:02}.{:03}", seconds / 3600, seconds / 60 % 60, seconds % 60,
                       rest * 1000 / kTicksPerSecond);
}

std::string CountText(std::int64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string FramesText(std::int64_t frames) {
    return CountText(frames, "frame");
}

std::string DurationText(const ClipInfo& info) {
    if (info.durationTicks <= 0) return "none";
    return fmt::format("{} ({})", TimeText(1, info.durationTicks), FramesText(info.frames));
}

std::string ShapeText(const ClipFormat& format) {
    const std::string size = SizeText(format.size);
    return IsSquare(format.aspect) ? size : fmt::format("{} ({})", size, AspectText(format.aspect));
}

std::string FormatText(const ClipFormat& format) {
    std::string text = ShapeText(format);
    if (format.Interlaced()) text += ", " + FieldOrderText(format.order);
    if (format.rate != Rate()) text += ", " + RateText(format.rate);
    return text;
}

} // namespace corvane
