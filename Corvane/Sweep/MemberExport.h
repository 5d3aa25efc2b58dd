#pragma once

#include <string>

#include "Export/Export.h"
#include "Family.h"

namespace corvane {

/// The kind of a member's output, as in `ExportOptions`: its container, or the suffix of its name. Any
/// thread, as for the one below; both fail only for want of memory.
std::string KindOf(const Member& member);

/// How a member is exported, with every picture hashed. Each on one thread of the codec: some encoders write
/// other bytes with other threads, of which every machine has another number.
ExportOptions ExportOf(const Family& family, const Member& member);

} // namespace corvane
