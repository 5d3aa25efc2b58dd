#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "Export/Picture/RowScan.h"
#include "Orientation.h"
#include "Video.h"

namespace corvane {

/// One plane of a picture as it was before it was mirrored and turned, not owned. Any thread.
struct PlaneView {
    const std::byte* base = nullptr; ///< the sample in the top left corner
    std::ptrdiff_t stepX = 0;        ///< bytes
    std::ptrdiff_t stepY = 0;        ///< bytes
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bits = 8; ///< above 8 in words

    /// A sample, from 0 to 1; it must be inside.
    float At(std::uint32_t x, std::uint32_t y) const {
        const std::byte* at = base + stepX * std::ptrdiff_t{x} + stepY * std::ptrdiff_t{y};
        const float most = static_cast<float>((1U << bits) - 1);
        if (bits == 8) return static_cast<float>(*reinterpret_cast<const std::uint8_t*>(at)) / most;
        return static_cast<float>(*reinterpret_cast<const std::uint16_t*>(at)) / most;
    }
    /// Whether rows count from the other end than those of the picture (columns, if it lies on its side).
    bool CountsBackwards() const { return stepY < 0; }
};

/// The plane of a picture that is luma, or nearest to it. Any thread.
PlaneView LumaOf(const VideoPicture& picture);

/// The same plane turned back: `orientation` is what was done to it. Any thread.
PlaneView TurnBack(PlaneView plane, const Orientation& orientation);

/// A part of a plane. Any thread.
PlaneView Cut(PlaneView plane, const Box& part);

/// Where the top left corner of a part of a plane lies once both were turned back: column and row. Any
/// thread.
std::pair<double, double> CornerOf(const Box& part, const PlaneView& plane, const Orientation& orientation);

} // namespace corvane
