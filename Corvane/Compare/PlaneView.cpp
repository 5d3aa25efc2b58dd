#include "PlaneView.h"

#include <algorithm>
#include <array>

namespace corvane {
namespace {

void MirrorX(PlaneView& plane) {
    plane.base += plane.stepX * (std::ptrdiff_t{plane.width} - 1);
    plane.stepX = -plane.stepX;
}

void MirrorY(PlaneView& plane) {
    plane.base += plane.stepY * (std::ptrdiff_t{plane.height} - 1);
    plane.stepY = -plane.stepY;
}

// Undoes one turn: what was the top is at the right.
void TurnBackOnce(PlaneView& plane) {
    MirrorX(plane);
    std::swap(plane.stepX, plane.stepY);
    std::swap(plane.width, plane.height);
}

} // namespace

PlaneView LumaOf(const VideoPicture& picture) {
    const std::size_t at = picture.format.yCbCr ? 0 : 1;
    return {picture.plane[at],   static_cast<std::ptrdiff_t>(picture.format.SampleBytes()),
            picture.stride[at],  picture.size.width,
            picture.size.height, picture.format.bits};
}

PlaneView TurnBack(PlaneView plane, const Orientation& orientation) {
    for (int turn = 0; turn < orientation.quarterTurns; ++turn) TurnBackOnce(plane);
    if (orientation.mirrored) MirrorX(plane);
    if (orientation.flipped) MirrorY(plane);
    return plane;
}

PlaneView Cut(PlaneView plane, const Box& part) {
    plane.base += plane.stepX * std::ptrdiff_t{part.left} + plane.stepY * std::ptrdiff_t{part.top};
    plane.width = part.Width();
    plane.height = part.Height();
    return plane;
}

std::pair<double, double> CornerOf(const Box& part, const PlaneView& plane, const Orientation& orientation) {
    // What lies left of the part, above, right and below; a turn back moves each on to the side before it.
    std::array<std::uint32_t, 4> around{part.left, part.top, plane.width - part.right,
                                        plane.height - part.bottom};
    std::rotate(around.begin(), around.begin() + orientation.quarterTurns, around.end());
    if (orientation.mirrored) std::swap(around[0], around[2]);
    if (orientation.flipped) std::swap(around[1], around[3]);
    return {around[0], around[1]};
}

} // namespace corvane
