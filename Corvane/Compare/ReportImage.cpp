#include "ReportImage.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <span>

#include "ColorSpace.h"
#include "Export/Picture/PackedReader.h"
#include "Export/Picture/ZimgGraph.h"
#include "Export/Targets/PngImage.h"

namespace corvane {
namespace {

constexpr RK_PixelFormat kRaster = kRK_4444 | kRK_AlphaIgnored; // B, G, R, X in bytes

zimg_image_format FormatOf(const PlanarFormat& planar, Size size, int matrix) {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = size.width;
    format.height = size.height;
    format.color_family = planar.yCbCr ? ZIMG_COLOR_YUV : ZIMG_COLOR_RGB;
    format.matrix_coefficients =
        planar.yCbCr ? static_cast<zimg_matrix_coefficients_e>(matrix) : ZIMG_MATRIX_RGB;
    format.pixel_range = !planar.yCbCr || planar.fullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    format.pixel_type = planar.bits > 8 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    format.depth = static_cast<unsigned>(planar.bits);
    return format;
}

/// The row of a plane that holds row `y`: in interlaced pictures each field has rows of its own.
std::uint32_t RowOfPlane(const VideoPicture& picture, int plane, std::uint32_t y) {
    const int shift = plane == 1 || plane == 2 ? picture.format.subsampleH : 0;
    if (shift == 0 || picture.order == FieldOrder::kProgressive) return y >> shift;
    const std::uint32_t rows = picture.format.PlaneHeight(plane, picture.size.height);
    return std::min((((y >> 1) >> shift) << 1) | (y & 1), rows - 1);
}

void TakeRow(const VideoPicture& picture, int plane, std::uint32_t y, std::uint32_t step, std::byte* to) {
    const std::byte* const row = picture.Row(plane, RowOfPlane(picture, plane, y));
    const int shift = plane == 1 || plane == 2 ? picture.format.subsampleW : 0;
    const std::size_t sample = picture.format.SampleBytes();
    for (std::uint32_t x = 0; x < picture.size.width; x += step, to += sample)
        std::memcpy(to, row + (x >> shift) * sample, sample);
}

Size SizeWith(Size size, std::uint32_t step) {
    return {(size.width + step - 1) / step, (size.height + step - 1) / step};
}

std::string Base64(std::span<const std::byte> bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t word = 0;
        for (std::size_t k = 0; k < 3; ++k)
            word = word << 8 | (i + k < bytes.size() ? std::to_integer<std::uint32_t>(bytes[i + k]) : 0);
        for (std::size_t k = 0; k < 4; ++k)
            text += i + k > bytes.size() ? '=' : kDigits[word >> (18 - 6 * k) & 63];
    }
    return text;
}

} // namespace

ReportImage ImageOf(const VideoPicture& picture, int matrix, std::uint32_t step) {
    ReportImage image{SizeWith(picture.size, step), {}};
    PlaneBuffer source, result;
    for (int plane = 0; plane < 3; ++plane) {
        source.Shape(plane, image.size.width * picture.format.SampleBytes(), image.size.height);
        result.Shape(plane, image.size.width, image.size.height);
        for (std::uint32_t y = 0; y < image.size.height; ++y)
            TakeRow(picture, plane, y * step, step, source.Row(plane, y));
    }
    PlanarFormat rgb;
    rgb.yCbCr = false;
    const bool told = picture.tags.matrix != 2 && picture.tags.matrix != 0;
    const int viewed = CodingOf(picture.format, picture.tags, picture.size.height).matrix;
    ZimgGraph(FormatOf(picture.format, image.size, told ? viewed : matrix), FormatOf(rgb, image.size, matrix))
        .Run(source, result);
    image.pixels.resize(std::size_t{image.size.width} * image.size.height * 4);
    std::byte* to = image.pixels.data();
    for (std::uint32_t y = 0; y < image.size.height; ++y)
        for (std::uint32_t x = 0; x < image.size.width; ++x, to += 4)
            for (int part = 0; part < 3; ++part) to[2 - part] = result.Row(part, y)[x];
    return image;
}

ReportImage ImageOf(const FrameView& frame, const StreamFacts& facts, std::uint32_t step) {
    ReportImage image{SizeWith({frame.width, frame.height}, step), {}};
    PackedFormat format{{2, 1, 0, 3}, 4, 8, false};
    PackedReader reader(facts, format);
    reader.Begin(frame);
    std::vector<std::byte> row(std::size_t{frame.width} * 4);
    image.pixels.resize(std::size_t{image.size.width} * image.size.height * 4);
    std::byte* to = image.pixels.data();
    for (std::uint32_t y = 0; y < frame.height; y += step) {
        reader.Read(y, frame.width, row.data());
        for (std::uint32_t x = 0; x < frame.width; x += step, to += 4) std::memcpy(to, &row[x * 4], 4);
    }
    return image;
}

ReportImage DifferenceOf(const ReportImage& a, const ReportImage& b, int gain) {
    ReportImage image{a.size, std::vector<std::byte>(a.pixels.size())};
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const int off = std::abs(std::to_integer<int>(a.pixels[i]) - std::to_integer<int>(b.pixels[i]));
        image.pixels[i] = static_cast<std::byte>(std::min(off * gain, 255));
    }
    return image;
}

int GainFor(const ReportImage& a, const ReportImage& b) {
    int most = 1, gain = 1;
    for (std::size_t i = 0; i < a.pixels.size(); ++i)
        if (i % 4 != 3)
            most = std::max(most,
                            std::abs(std::to_integer<int>(a.pixels[i]) - std::to_integer<int>(b.pixels[i])));
    while (gain < 64 && most * gain * 2 <= 255) gain *= 2;
    return gain;
}

ReportImage Enlarged(const ReportImage& image, const Box& part, std::uint32_t times) {
    const std::uint32_t right = std::min(part.right, image.size.width);
    const std::uint32_t bottom = std::min(part.bottom, image.size.height);
    const std::uint32_t left = std::min(part.left, right), top = std::min(part.top, bottom);
    ReportImage large{{(right - left) * times, (bottom - top) * times}, {}};
    large.pixels.reserve(std::size_t{large.size.width} * large.size.height * 4);
    for (std::uint32_t y = 0; y < large.size.height; ++y)
        for (std::uint32_t x = 0; x < large.size.width; ++x) {
            const std::byte* const pixel = image.At(left + x / times, top + y / times);
            large.pixels.insert(large.pixels.end(), pixel, pixel + 4);
        }
    return large;
}

ReportImage Beside(std::span<const ReportImage> images) {
    constexpr std::uint32_t kGap = 8;
    ReportImage all{{0, 1}, {}};
    for (const ReportImage& image : images) {
        all.size.width += image.size.width + (all.size.width > 0 ? kGap : 0);
        all.size.height = std::max(all.size.height, image.size.height);
    }
    all.pixels.assign(std::size_t{all.size.width} * all.size.height * 4, std::byte{255});
    std::size_t left = 0;
    for (const ReportImage& image : images) {
        for (std::uint32_t y = 0; y < image.size.height; ++y)
            std::copy_n(image.At(0, y), image.size.width * 4,
                        all.pixels.data() + (std::size_t{y} * all.size.width + left) * 4);
        left += image.size.width + kGap;
    }
    return all;
}

std::string DataURIOf(const ReportImage& image) {
    StreamFacts facts;
    facts.size = image.size;
    facts.raster = kRaster;
    const auto rowBytes = static_cast<std::int32_t>(image.size.width * 4);
    PngImage png(facts);
    return "data:image/png;base64," +
           Base64(png.Encode({image.pixels.data(), rowBytes, image.size.width, image.size.height, kRaster}));
}

} // namespace corvane
