#pragma once

#include <memory>

#include "Export/Picture/StreamFacts.h"
#include "Target.h"

namespace corvane {

/// PNG images, in files as `PictureFiles` says.
std::unique_ptr<Target> MakePngTarget(const std::filesystem::path& path, const StreamFacts& facts);

} // namespace corvane
