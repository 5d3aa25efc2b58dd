#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Engine/ClipFormat.h"
#include "Export/Picture/StreamFacts.h"
#include "Video.h"

namespace corvane {

/// A picture for people: B, G, R and an unused byte a pixel, without gaps.
struct ReportImage {
    Size size{};
    std::vector<std::byte> pixels;

    const std::byte* At(std::uint32_t x, std::uint32_t y) const {
        return pixels.data() + (std::size_t{y} * size.width + x) * 4;
    }
};

// Functions: any thread. All throw `std::bad_alloc`, and `Failure` if zimg or PNG can't do it.

/// Every `step`-th pixel of every `step`-th row of a picture as a viewer shows it who believes its tags. An
/// odd step keeps both fields. `matrix` is for pictures that don't tell theirs.
ReportImage ImageOf(const VideoPicture& picture, int matrix, std::uint32_t step);
/// The same of a delivered frame.
ReportImage ImageOf(const FrameView& frame, const StreamFacts& facts, std::uint32_t step);
/// What two pictures of one size differ by, `gain` times as strong, as gray of each channel.
ReportImage DifferenceOf(const ReportImage& a, const ReportImage& b, int gain);
/// The picture as a PNG in a data URI.
std::string DataURIOf(const ReportImage& image);

} // namespace corvane
