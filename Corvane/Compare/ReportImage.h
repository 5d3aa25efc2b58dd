#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Engine/ClipFormat.h"
#include "Export/Picture/RowScan.h"
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
/// A part of a picture, as far as it lies in it, each pixel `times` x `times` pixels large.
ReportImage Enlarged(const ReportImage& image, const Box& part, std::uint32_t times);
/// What two pictures of one size differ by, `gain` times as strong, in each channel.
ReportImage DifferenceOf(const ReportImage& a, const ReportImage& b, int gain);
/// The power of two, at most 64, that makes the largest difference of two pictures of one size as strong as
/// it can be without being cut.
int GainFor(const ReportImage& a, const ReportImage& b);
/// Pictures beside each other, from left to right, with gaps of white between.
ReportImage Beside(std::span<const ReportImage> images);
/// The picture as a PNG in a data URI.
std::string DataURIOf(const ReportImage& image);

} // namespace corvane
