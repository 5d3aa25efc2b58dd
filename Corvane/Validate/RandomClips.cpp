#include "RandomClips.h"

#include <fmt/format.h>

#include "Services/Raster/PixelFormats.h"
#include "lummediatypes.h"

namespace corvane {

namespace {

constexpr std::uint32_t kSides[] = {0, 1, 2, 17, 46, 46, 47, 64, 32769, 70000, 4294967295};
constexpr std::int32_t kFieldTypes[] = {0, 1, 2, 3, 258, -1};
constexpr std::int64_t kRates[] = {10160640000, 8475667200, 10594584000, 254016, 0, -10160640000};
constexpr float kParts[] = {0, 0.25f, 0.5f, 1, 2.5f, -1, 1e38f, -1e38f};

} // namespace

ClipSettings RandomSettings(Random& random) {
    ClipSettings settings;
    settings.pixelFormat =
        random.OneIn(8) ? static_cast<CvPixelFormat>(random.Bits()) : random.Of(PixelFormatTable()).code;
    settings.size = {random.Of(kSides), random.Of(kSides)};
    settings.aspect = {static_cast<std::uint32_t>(random.Below(5)),
                       static_cast<std::uint32_t>(random.Below(5))};
    settings.fieldType = random.Of(kFieldTypes);
    settings.renderFormat = static_cast<std::uint32_t>(random.Below(3));
    settings.ticksPerFrame = random.Of(kRates);
    const auto frames = static_cast<std::int64_t>(random.Below(400)) - 100;
    settings.durationTicks =
        frames * (settings.ticksPerFrame > 0 ? settings.ticksPerFrame : lummediatypes::kTicksPerSecond);
    for (SettingsColor* const color : {&settings.upper, &settings.lower, &settings.topStart, &settings.topEnd,
                                       &settings.bottomStart, &settings.bottomEnd})
        for (float& part : *color) part = random.Of(kParts);
    return settings;
}

SettingsBytes RandomBytes(Random& random) {
    if (random.OneIn(4)) return {random.Of(kMalformedTexts).text, {}};
    SettingsBytes made{{}, RandomSettings(random)};
    made.bytes = WriteSettings(*made.settings);
    if (random.OneIn(4))
        made.bytes = fmt::format(R"({{"SerializerWrappedObject":{},"mFrameWidth":""}})", made.bytes);
    if (random.OneIn(4)) made.bytes += std::string("\0{", 2);
    return made;
}

} // namespace corvane
