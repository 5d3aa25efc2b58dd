#pragma once

#include <memory>

#include "Export/Targets/LibavLoader.h"

namespace corvane {

/// Pictures of a kind that libav encodes, each by itself and by whatever thread prepares it; files as
/// `PictureFiles` says. Throws as `MakeLibavTarget` does.
std::unique_ptr<Target> MakeLibavPictures(const LibavRequest& request);

} // namespace corvane
