// Faults sought: rows that the block-by-block compressor gets wrong (one color, anything, the change from
// one to the other, a width of 1), components in the wrong place, a wrong checksum, aspect the wrong way
// round.
#include "Export/Targets/PngImage.h"

#include <png.h>

#include <gtest/gtest.h>

#include "Tests/Export/Picture/TestFrames.h"

namespace {

using corvane::testing::TestFrame;

/// What libpng's own reader makes of an image.
struct Decoded {
    png_uint_32 width = 0, height = 0, aspectX = 0, aspectY = 0;
    int channels = 0, depth = 0;
    bool gamma = false;
    std::vector<std::uint8_t> bytes; // rows without gaps

    unsigned At(std::size_t x, std::size_t y, std::size_t channel) const {
        const std::size_t sample = (y * width + x) * static_cast<std::size_t>(channels) + channel;
        return depth == 8 ? bytes[sample] : bytes[2 * sample] * 256u + bytes[2 * sample + 1];
    }
};

void Feed(png_structp png, png_bytep out, std::size_t size) {
    auto& rest = *static_cast<std::span<const std::byte>*>(png_get_io_ptr(png));
    if (rest.size() < size) png_error(png, "the image is too short");
    std::memcpy(out, rest.data(), size);
    rest = rest.subspan(size);
}

[[noreturn]] void Throw(png_structp, png_const_charp message) {
    throw std::runtime_error(message);
}

Decoded Decode(std::span<const std::byte> image) {
    Decoded result;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Throw, Throw);
    png_infop info = png_create_info_struct(png);
    png_set_read_fn(png, &image, Feed);
    png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    result.width = png_get_image_width(png, info);
    result.height = png_get_image_height(png, info);
    result.channels = png_get_channels(png, info);
    result.depth = png_get_bit_depth(png, info);
    int unit = -1;
    png_get_pHYs(png, info, &result.aspectX, &result.aspectY, &unit);
    result.gamma = png_get_valid(png, info, PNG_INFO_gAMA | PNG_INFO_sRGB | PNG_INFO_cHRM) != 0;
    const png_bytepp rows = png_get_rows(png, info);
    for (png_uint_32 y = 0; y < result.height; ++y)
        result.bytes.insert(result.bytes.end(), rows[y], rows[y] + png_get_rowbytes(png, info));
    EXPECT_TRUE(image.empty()) << "bytes behind the image";
    png_destroy_read_struct(&png, &info, nullptr);
    return result;
}

/// Encodes the frame, and compares what is read back with its pixels.
void ExpectReadsBack(corvane::PngImage& encoder, TestFrame& frame) {
    const corvane::FrameView view = frame.View();
    const Decoded image = Decode(encoder.Encode(view));
    EXPECT_EQ(std::pair(image.aspectX, image.aspectY), (std::pair{33u, 40u})) << "pixels a unit: the inverse";
    EXPECT_FALSE(image.gamma);
    ASSERT_EQ(image.channels, view.format & kRK_AlphaIgnored ? 3 : 4);
    ASSERT_EQ(image.depth, 8);
    const std::size_t places[] = {2, 1, 0, 3}, placesBehindAlpha[] = {1, 2, 3, 0}; // of R, G, B and A
    for (std::uint32_t y = 0; y < view.height; ++y)
        for (std::uint32_t x = 0; x < view.width; ++x)
            for (std::size_t c = 0; c < static_cast<std::size_t>(image.channels); ++c) {
                const std::size_t place = (view.format & kRK_AlphaFirst ? placesBehindAlpha : places)[c];
                ASSERT_EQ(image.At(x, y, c), std::to_integer<unsigned>(frame.Pixel(x, y)[place]))
                    << view.width << " " << view.format << " at " << x << "," << y << " channel " << c;
            }
}

TEST(PngImage, EveryPixelOfEveryKindOfRowReadsBack) {
    for (const std::uint32_t width : {1u, 2u, 3u, 47u, 300u, 1920u})
        for (const RK_PixelFormat format : {kRK_4444, kRK_4444 | kRK_AlphaFirst, kRK_4444 | kRK_AlphaIgnored,
                                            kRK_4444 | kRK_AlphaIgnored | kRK_AlphaFirst}) {
            TestFrame frame(width, 9, format);
            frame.Facts().aspect = {40, 33};
            frame.Draw(width / 3, 2, width, 5);
            frame.Draw(width / 3, 3, width / 2 + 1, 7);
            corvane::PngImage encoder(frame.Facts());
            for (int again = 0; again < 2; ++again) ExpectReadsBack(encoder, frame);
        }
    // A row of more zeros than the checksum's modulus, and one of whole blocks whose pixels differ two by
    // two.
    TestFrame wide(16512, 2, kRK_4444);
    wide.Facts().aspect = {40, 33};
    for (std::uint32_t x = 0; x < 16512; ++x) wide.Set(x, 1, x % 4 < 2 ? 0xFF102030 : 0xFF405060);
    corvane::PngImage ofWide(wide.Facts());
    ExpectReadsBack(ofWide, wide);
    TestFrame noise(1000, 300, kRK_4444); // does not compress
    noise.Facts().aspect = {40, 33};
    noise.Draw(0, 0, 1000, 300);
    corvane::PngImage encoder(noise.Facts());
    ExpectReadsBack(encoder, noise);
}

TEST(PngImage, FormatsThatNeedConversion) {
    struct Row {
        RK_PixelFormat format;
        float pixel[4];       // codes if the format is not float
        unsigned expected[4]; // of 65535, or of 255; the last is alpha, ignored for three channels
    };
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    // Linear 0.18 is 1.099 * 0.18^0.45 - 0.099 = 0.409008; Y'CbCr: 0.5 red by each matrix. In 8 bits BT.601
    // red is Y' 81, Cb 90, Cr 240; BT.709 red 63, 102, 240.
    const Row rows[] = {
        {kRK_4444 | kRK_Float, {0.25f, 0.5f, 0.75f, 1.0f}, {49151, 32768, 16384, 65535}},
        {kRK_4444 | kRK_Float | kRK_AlphaFirst, {0.5f, 1.5f, -1.0f, 0.25f}, {65535, 0, 16384, 32768}},
        {kRK_4444 | kRK_Float | kRK_Linear, {0.0f, 0.18f, 1.0f, 1.0f}, {65535, 26804, 0, 65535}},
        {kRK_4444 | kRK_Float | kRK_Premultiplied, {0.1f, 0.2f, 0.05f, 0.4f}, {8192, 32768, 16384, 26214}},
        {kRK_4444 | kRK_Float | kRK_AlphaIgnored, {nan, inf, -inf, nan}, {0, 65535, 0, 0}},
        {kRK_4444 | kRK_Float | kRK_YCbCr | kRK_709, {0.25f, -0.05728f, 0.1063f, 1.0f}, {32768, 0, 0, 65535}},
        {kRK_4444 | kRK_Float | kRK_YCbCr, {0.25f, -0.084368f, 0.1495f, 1.0f}, {32768, 0, 0, 65535}},
        {kRK_4444 | kRK_Premultiplied, {10, 20, 64, 128}, {128, 40, 20, 128}},
        {kRK_4444 | kRK_Premultiplied, {10, 20, 30, 0}, {0, 0, 0, 0}},
        {kRK_4444 | kRK_YCbCr | kRK_Premultiplied, {184, 109, 49, 128}, {255, 0, 0, 128}},
        {kRK_4444 | kRK_YCbCr, {240, 90, 81, 255}, {254, 0, 0, 255}},
        {kRK_4444 | kRK_YCbCr | kRK_709, {240, 102, 63, 255}, {255, 0, 0, 255}},
    };
    for (const Row& row : rows) {
        const bool isFloat = row.format & kRK_Float;
        TestFrame frame(5, 3, row.format);
        for (std::uint32_t i = 0; i < 15; ++i) {
            if (isFloat) frame.SetFloats(i % 5, i / 5, row.pixel);
            for (int c = 0; c < 4 && !isFloat; ++c)
                frame.Pixel(i % 5, i / 5)[c] = static_cast<std::byte>(row.pixel[c]);
        }
        corvane::PngImage encoder(frame.Facts());
        const Decoded image = Decode(encoder.Encode(frame.View()));
        ASSERT_EQ(image.depth, isFloat ? 16 : 8);
        ASSERT_EQ(image.channels, row.format & kRK_AlphaIgnored ? 3 : 4);
        for (std::size_t c = 0; c < static_cast<std::size_t>(image.channels); ++c)
            EXPECT_NEAR(image.At(4, 2, c), row.expected[c], isFloat ? 2 : 1)
                << "format " << row.format << " channel " << c;
    }
}

} // namespace
