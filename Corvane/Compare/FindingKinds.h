#pragma once

#include <array>
#include <string>
#include <string_view>

namespace corvane {

/// Every kind of finding. Docs/Compare.md tells what each means.
inline constexpr std::array<std::string_view, 34> kFindingKinds = {
    "frames.missing", "frames.repeated", "frames.order",    "frames.foreign",  "time.rate",
    "time.jitter",    "time.duration",   "geometry.size",   "geometry.aspect", "geometry.crop",
    "geometry.pad",   "geometry.shift",  "geometry.mirror", "geometry.rotate", "fields.order",
    "fields.swapped", "fields.shifted",  "fields.blended",  "fields.dropped",  "fields.pulldown",
    "fields.chroma",  "color.matrix",    "color.range",     "color.channels",  "color.transfer",
    "color.alpha",    "color.clipped",   "color.depth",     "color.error",     "tags.aspect",
    "tags.order",     "tags.rate",       "tags.matrix",     "tags.range"};

/// Whether `name` is the kind itself or the group that it belongs to, its part before the period. Any thread.
constexpr bool NamesKind(std::string_view name, std::string_view kind) {
    return name == kind || name == kind.substr(0, kind.find('.'));
}

} // namespace corvane
