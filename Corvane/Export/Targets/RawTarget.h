#pragma once

#include <memory>

#include "Export/Picture/StreamFacts.h"
#include "Target.h"

namespace corvane {

/// Frames one after the other with nothing between them. `native`: the bytes as delivered, without row
/// padding. Else B, G, R, A in bytes for 8-bit formats and R, G, B, A in 16-bit little-endian words for float
/// ones, with straight alpha; opaque if the format has no alpha. Throws `Failure` if the file can't be made
/// or the disk has no room for the frames. Any thread.
std::unique_ptr<Target> MakeRawTarget(const std::filesystem::path& path, bool native,
                                      const StreamFacts& facts);

} // namespace corvane
