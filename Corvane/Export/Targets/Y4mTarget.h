#pragma once

#include <memory>
#include <string>

#include "Export/Picture/StreamFacts.h"
#include "Target.h"

namespace corvane {

/// YUV4MPEG2, written without libav. `sampling` is 420, 422 or 444, with p10, p12, p14 or p16 behind it for
/// more bits. Empty: 420, or 420p16 for float formats. Limited range, chroma sited left. Throws
/// `UsageFailure` for another sampling, and `Failure` if the file can't be made. Any thread.
std::unique_ptr<Target> MakeY4mTarget(const std::filesystem::path& path, const std::string& sampling,
                                      const StreamFacts& facts);

} // namespace corvane
