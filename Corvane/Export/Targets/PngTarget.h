#pragma once

#include <memory>

#include "Export/Picture/StreamFacts.h"
#include "Target.h"

namespace corvane {

/// PNG images: one file, or with a number in the name one file a frame. The files of a sequence take their
/// places together at the end, so that a sequence is whole or not there. The target throws `Failure`, naming
/// the file, if one can't be written.
std::unique_ptr<Target> MakePngTarget(const std::filesystem::path& path, const StreamFacts& facts);

} // namespace corvane
