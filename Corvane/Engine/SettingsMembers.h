/// The members of a settings text: the one list of them on the host's side. What reads, writes, checks and
/// describes settings walks it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <type_traits>

#include "Services/Frames/FrameBuffers.h"
#include "SettingsText.h"

namespace corvane {

/// Which numbers a member may have, if it may not have all of a range.
enum class SettingsCodes : std::uint8_t { kNone, kPixelFormats, kFieldTypes, kRenderFormats };

/// What a settings text has in one place.
struct SettingsMember {
    const char* key;
    const char* part; ///< of the object that the key holds; null if the key holds the number itself
    const char* about;
    std::int64_t least = 0; ///< what a clip that can be rendered has at least; of whole numbers, as `most`
    std::int64_t most = 0;
    SettingsCodes codes = SettingsCodes::kNone; ///< which of these instead of a range
};

/// The object that the host's own serializer puts settings into, by its key.
inline constexpr char kSettingsWrapper[] = "SerializerWrappedObject";

/// Whether a member of that type is a color's part, which may be a fraction, and not a whole number.
template <class Number>
inline constexpr bool kIsFraction = std::is_floating_point_v<Number>;

/// Calls `visit(SettingsMember, member)` for every member of `settings`. Fails as `visit` does. Any thread.
template <class Settings, class Visit>
void VisitMembers(Settings& settings, const Visit& visit) {
    constexpr std::int64_t k32 = std::numeric_limits<std::uint32_t>::max();
    constexpr std::int64_t k64 = std::numeric_limits<std::int64_t>::max();
    const auto code = [&](const char* key, const char* about, SettingsCodes codes, auto& member) {
        visit(SettingsMember{key, nullptr, about, 0, 0, codes}, member);
    };
    const auto side = [&](const char* key, const char* about, auto& member) {
        visit(SettingsMember{key, nullptr, about, 1, kDefaultMaxFrameSide}, member);
    };
    const auto part = [&](const char* key, const char* name, const char* about, std::int64_t most,
                          auto& member) {
        visit(SettingsMember{key, name, about, 1, most}, member);
    };
    const auto color = [&](const char* key, const char* about, auto& parts) {
        constexpr const char* kParts[] = {"mBluePart", "mGreenPart", "mRedPart", "mAlphaPart"};
        for (std::size_t i = 0; i < std::size(kParts); ++i)
            visit(SettingsMember{key, kParts[i], about}, parts[i]);
    };
    code("mPixelFormat", "The pixel format of the frames: a code of 'synthex formats --json'",
         SettingsCodes::kPixelFormats, settings.pixelFormat);
    side("mFrameWidth", "Pixels of a row", settings.size.width);
    side("mFrameHeight", "Rows of a frame", settings.size.height);
    constexpr char kShape[] = "The shape of a pixel, its width to its height";
    part("mFramePAR", "numerator", kShape, k32, settings.aspect.numerator);
    part("mFramePAR", "denominator", kShape, k32, settings.aspect.denominator);
    code("mFieldType", "The order of the fields", SettingsCodes::kFieldTypes, settings.fieldType);
    code("mRenderFormat", "What is drawn", SettingsCodes::kRenderFormats, settings.renderFormat);
    part("mVideoFrameRate", "ticksperframe", "How long a frame lasts, in ticks of 1/254016000000 second", k64,
         settings.ticksPerFrame);
    part("mVideoDuration", "ticks", "How long the clip lasts, in ticks of 1/254016000000 second", k64,
         settings.durationTicks);
    color("mUpperFieldColor", "The even rows (0, 2, 4 ...); all rows of a progressive clip", settings.upper);
    color("mLowerFieldColor", "The odd rows of an interlaced clip", settings.lower);
    // So they are spelled in all files.
    color("mTopGradiantColorStart", "The gradient's top row on the first frame", settings.topStart);
    color("mTopGradiantColorEnd", "The gradient's top row at the end", settings.topEnd);
    color("mBottomGradiantColorStart", "The gradient's bottom on the first frame", settings.bottomStart);
    color("mBottomGradiantColorEnd", "The gradient's bottom at the end", settings.bottomEnd);
}

} // namespace corvane
