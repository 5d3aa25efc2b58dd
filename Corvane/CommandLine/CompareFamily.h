#pragma once

#include <filesystem>

#include "Commands.h"

namespace corvane::commandline {

/// Whether what `compare` is to take as a clip is the manifest of a family, or a folder that holds one.
bool MeansFamily(const std::filesystem::path& clip);

/// `RunCompare` for a family: compares the video of each member, which lies in the folder `request.video`,
/// with the member's clip. A member that can't be compared is told at once, does not hold up the others, and
/// makes the status `kExitFailed`.
int CompareFamily(const CompareRequest& request);

} // namespace corvane::commandline
