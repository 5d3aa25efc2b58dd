#include "PictureGeometry.h"

#include <algorithm>

namespace corvane::desktop {

namespace {

using Wide = unsigned __int128;

int Rounded(Wide dividend, Wide divisor) {
    const Wide quotient = (dividend + divisor / 2) / divisor;
    return static_cast<int>(std::clamp<Wide>(quotient, 1, kMaxPictureSide));
}

/// The picture's shape as width : height.
struct Shape {
    Wide width = 1;
    Wide height = 1;

    explicit Shape(const ClipFormat& clip) {
        const PixelAspect aspect = Reduced(clip.aspect);
        width = Wide{std::max(clip.size.width, 1u)} * aspect.numerator;
        height = Wide{std::max(clip.size.height, 1u)} * aspect.denominator;
    }
};

} // namespace

ShownLines LinesOf(std::uint32_t height, FieldView fields) {
    if (fields == FieldView::kBoth || height < 2) return {0, 1, height};
    const std::uint32_t first = fields == FieldView::kUpper ? 0 : 1;
    return {first, 2, (height - first + 1) / 2};
}

QSize FullSize(const ClipFormat& clip) {
    const Shape shape(clip);
    const Wide height = std::clamp<Wide>(clip.size.height, 1, kMaxPictureSide);
    return {Rounded(height * shape.width, shape.height), static_cast<int>(height)};
}

QSize FittedSize(const ClipFormat& clip, QSize room) {
    const Shape shape(clip);
    const Wide width = static_cast<Wide>(std::max(room.width(), 1));
    const Wide height = static_cast<Wide>(std::max(room.height(), 1));
    if (width * shape.height <= height * shape.width)
        return {static_cast<int>(width),
                std::min(Rounded(width * shape.height, shape.width), static_cast<int>(height))};
    return {std::min(Rounded(height * shape.width, shape.height), static_cast<int>(width)),
            static_cast<int>(height)};
}

std::uint32_t UnderPlace(std::uint32_t extent, int result, int at) {
    if (extent == 0 || result <= 0 || at < 0) return 0;
    const std::uint64_t place =
        std::uint64_t{extent} * static_cast<unsigned>(at) / static_cast<unsigned>(result);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(place, extent - 1));
}

} // namespace corvane::desktop
