#pragma once

#include <nlohmann/json.hpp>

#include "Compare/Comparison.h"

namespace corvane::commandline {

/// What `compare --json` tells of a report. Any thread; fails only for want of memory.
nlohmann::ordered_json CompareJSON(const CompareReport& report);

} // namespace corvane::commandline
