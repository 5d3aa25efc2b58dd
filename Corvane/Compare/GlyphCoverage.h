#pragma once

#include "Services/Raster/RasterkitStrokes.h"

namespace corvane {

/// How much of a rectangle a printed character covers, from 0 to 1. Coordinates are the grid's of a
/// character, of which `raster::kGlyphHeight` are its height; outside of it there is nothing. The rectangle
/// is not empty. Any thread.
float GlyphCoverage(std::uint32_t glyph, float left, float top, float right, float bottom);

} // namespace corvane
