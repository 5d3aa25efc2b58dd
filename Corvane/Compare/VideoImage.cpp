#include "VideoImage.h"

#include <cstring>

namespace corvane {
namespace {

zimg_image_format FormatOf(const PlanarFormat& planar, Size size, const SampleCoding& coding) {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = size.width;
    format.height = size.height;
    format.pixel_type = planar.bits > 8 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    format.depth = static_cast<unsigned>(planar.bits);
    format.subsample_w = static_cast<unsigned>(planar.subsampleW);
    format.subsample_h = static_cast<unsigned>(planar.subsampleH);
    format.color_family = planar.yCbCr ? ZIMG_COLOR_YUV : ZIMG_COLOR_RGB;
    format.matrix_coefficients =
        planar.yCbCr ? static_cast<zimg_matrix_coefficients_e>(coding.matrix) : ZIMG_MATRIX_RGB;
    format.pixel_range = coding.fullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    return format;
}

} // namespace

void VideoImage::Convert(const VideoPicture& picture, std::byte* out, std::ptrdiff_t rowBytes) {
    PlanarFormat format = picture.format;
    format.alpha = false;
    const Kind kind{format, picture.size, CodingOf(format, picture.tags, picture.size.height)};
    if (!mGraph || kind != mKind) {
        PlanarFormat packed;
        packed.yCbCr = false;
        mGraph.reset();
        mGraph =
            std::make_unique<ZimgGraph>(FormatOf(format, picture.size, kind.coding),
                                        FormatOf(packed, picture.size, {.yCbCr = false, .fullRange = true}));
        mKind = kind;
    }
    for (int plane = 0; plane < 3; ++plane) {
        const std::uint32_t rows = format.PlaneHeight(plane, picture.size.height);
        const std::size_t bytes = format.PlaneWidth(plane, picture.size.width) * format.SampleBytes();
        mSource.Shape(plane, bytes, rows);
        for (std::uint32_t y = 0; y < rows; ++y)
            std::memcpy(mSource.Row(plane, y), picture.Row(plane, y), bytes);
        mResult.Shape(plane, picture.size.width, picture.size.height);
    }
    mGraph->Run(mSource, mResult);
    for (std::uint32_t y = 0; y < picture.size.height; ++y, out += rowBytes)
        for (std::uint32_t x = 0; x < picture.size.width; ++x) {
            std::byte* const pixel = out + std::size_t{x} * 4;
            for (int part = 0; part < 3; ++part) pixel[2 - part] = mResult.Row(part, y)[x];
            pixel[3] = std::byte{0xFF};
        }
}

} // namespace corvane
