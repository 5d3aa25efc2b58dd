#include "PlaneView.h"

#include <utility>

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

} // namespace corvane
