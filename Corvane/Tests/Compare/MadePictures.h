#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Compare/ColorAnalysis.h"
#include "Compare/FieldAnalysis.h"

namespace corvane::testing {

/// A clip whose frames are made by arithmetic: 32 x `height` pixels of floats.
struct MadeClip {
    StreamFacts facts;
    std::function<Color(double row, std::int64_t frame)> color;

    MadeClip(std::uint32_t height, FieldOrder order, std::function<Color(double, std::int64_t)> colorAt)
        : color(std::move(colorAt)) {
        facts.size = {32, height};
        facts.order = order;
        facts.raster = kRK_4444 | kRK_Float;
        facts.rate = {25, 1};
        facts.tags = TagsFor(facts);
    }

    ExpectedRows Rows(std::int64_t frame) const {
        std::vector<float> pixels; // B, G, R, A
        for (std::uint32_t y = 0; y < facts.size.height; ++y) {
            const Color at = color(y, frame);
            for (const std::size_t part : {2u, 1u, 0u, 3u}) pixels.push_back(static_cast<float>(at[part]));
        }
        ExpectedRows rows;
        rows.Read({reinterpret_cast<const std::byte*>(pixels.data()), 16, 1, facts.size.height, facts.raster},
                  facts);
        return rows;
    }
};

/// What a pipeline does to the clip, and what it says of it.
struct Pipeline {
    std::function<Color(const Color&)> change = {}; ///< of colors; none if empty
    SampleCoding coding;                            ///< what samples are made by
    PlanarFormat format;                            ///< what they are kept in
    VideoTags tags;                                 ///< what is said of them
    std::string codec = "ffv1";
    std::function<double(double code, int plane)> spoil = {}; ///< of code values; none if empty
    bool fieldChroma = true; ///< whether chroma is subsampled within fields, if there are any
};

/// The rows of a picture with these colors.
inline PictureRows MakePicture(const std::vector<Color>& colors, const Pipeline& pipeline, bool interlaced) {
    PictureRows rows;
    rows.format = pipeline.format;
    const auto height = static_cast<std::uint32_t>(colors.size());
    for (int plane = 0; plane < rows.format.Planes(); ++plane) {
        const auto at = static_cast<std::size_t>(plane);
        const std::uint32_t count = rows.format.PlaneHeight(plane, height), each = count == height ? 1 : 2;
        const std::uint32_t fields = interlaced && pipeline.fieldChroma ? 2 : 1;
        for (std::uint32_t y = 0; y < count; ++y) {
            double sum = 0;
            for (std::uint32_t i = 0; i < each; ++i) {
                const std::uint32_t from = each == 1 ? y : (y / fields * each + i) * fields + y % fields;
                const Color& color = colors[std::min(from, height - 1)];
                sum += Encode(pipeline.change ? pipeline.change(color) : color, pipeline.coding)[at];
            }
            const double code = pipeline.spoil ? pipeline.spoil(sum / each, plane) : sum / each;
            const double most = std::ldexp(1.0, rows.format.bits) - 1;
            const auto value = static_cast<std::uint16_t>(std::clamp(std::round(code), 0.0, most));
            rows.plane[at].push_back({float(value), value, value});
        }
    }
    return rows;
}

/// The whole picture shows the whole frame.
inline Placement Plain(Size size) {
    Placement placement;
    placement.width = size.width;
    placement.height = size.height;
    placement.active = {0, 0, size.width, size.height};
    return placement;
}

inline std::string KindsOf(const std::vector<Finding>& findings) {
    std::string kinds;
    for (const Finding& finding : findings) kinds += (kinds.empty() ? "" : " ") + finding.kind;
    return kinds;
}

} // namespace corvane::testing
