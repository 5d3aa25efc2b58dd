#pragma once

#include <nlohmann/json_fwd.hpp>

#include "Clip.h"

namespace corvane {

/// What a clip is, for programs: the keys of `synthex info --json` without the path, in their order. Any
/// thread; fails only for want of memory.
nlohmann::ordered_json ClipFacts(const ClipInfo& info);

} // namespace corvane
