#include "Rasterkit.h"

#include <stdexcept>

#include <fmt/format.h>

#include "PixelFormats.h"
#include "RasterkitPixel.h"
#include "RasterkitRows.h"

void RK_FillWithColor(void* start, std::int32_t rowStep, std::uint32_t width, std::uint32_t rows,
                      RK_PixelFormat format, const float* color, std::int32_t mode) {
    using namespace corvane::raster;
    corvane::RequireConcrete(format);
    if (mode != kRK_FillReplace) throw std::invalid_argument(fmt::format("Fill mode {} is not known.", mode));
    if (width == 0) return;
    FillRows(static_cast<std::byte*>(start), rowStep, std::size_t{width} * corvane::BytesPerPixel(format),
             rows, ConvertColor(color, format));
}
