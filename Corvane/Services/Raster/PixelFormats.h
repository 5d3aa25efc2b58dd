/// The host's table of pixel formats, for programs that list them.
#pragma once

#include <span>

#include "CvPixelFormats.h"

namespace corvane {

/// One pixel format of the host.
struct PixelFormatRow {
    CvPixelFormat code;
    const char* name; ///< the constant's own name, `CvPixelFormat_` included
    RK_PixelFormat raster;
};

/// All 48 formats, in the order in which the host lists them. Lives as long as the process. Any thread.
std::span<const PixelFormatRow> PixelFormatTable();

} // namespace corvane
