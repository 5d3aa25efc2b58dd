#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "ClipFormat.h"
#include "CvPixelFormats.h"

namespace corvane {

/// A color as the raster service takes it: blue, green, red, alpha.
using SettingsColor = std::array<float, 4>;
inline constexpr SettingsColor kOpaqueBlack{0, 0, 0, 1};

/// The settings of a clip as a settings text holds them. The initializers are what members that are missing
/// mean.
struct ClipSettings {
    CvPixelFormat pixelFormat = 0; ///< the format asked for; it may be unknown to the host
    Size size{};
    PixelAspect aspect{};
    std::int32_t fieldType = 0;     ///< `FieldOrderOf` says what it means
    std::uint32_t renderFormat = 0; ///< 0: the field colors; any other: the gradient
    std::int64_t ticksPerFrame = 0; ///< no rate if not above 0
    std::int64_t durationTicks = 0;
    SettingsColor upper = kOpaqueBlack; ///< of a progressive clip, the whole frame's
    SettingsColor lower = kOpaqueBlack;
    SettingsColor topStart = kOpaqueBlack;
    SettingsColor topEnd = kOpaqueBlack;
    SettingsColor bottomStart = kOpaqueBlack;
    SettingsColor bottomEnd = kOpaqueBlack;

    bool operator==(const ClipSettings&) const = default;
};

/// Settings from their text, which may be wrapped as the host's serializer does it, and ends at a zero byte.
/// Never fails: a member that is not of the right kind counts as missing, and of a text that is no JSON all
/// are. Any thread.
ClipSettings ReadSettings(const std::string& text);

/// Whether every pixel of the clip is opaque: no color that is shown has an alpha below 1. Any thread.
bool IsOpaque(const ClipSettings& settings);

/// The text of settings: all members, in the order and the form in which a plug-in writes them. Any thread.
std::string WriteSettings(const ClipSettings& settings);

} // namespace corvane
