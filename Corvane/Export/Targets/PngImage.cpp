#include "PngImage.h"

#include <csetjmp>

#include <fmt/format.h>
#include <png.h>

namespace corvane {
namespace {

constexpr std::byte kFilterSub{1};

PackedFormat PngFormatFor(const StreamFacts& facts) {
    PackedFormat format;
    format.components = facts.HasAlpha() ? 4 : 3;
    format.bits = facts.IsFloat() ? 16 : 8;
    format.bigEndian = true;
    return format;
}

void AppendTo(png_structp png, png_bytep bytes, std::size_t size) {
    auto& file = *static_cast<std::vector<std::byte>*>(png_get_io_ptr(png));
    const auto* const start = reinterpret_cast<const std::byte*>(bytes);
    file.insert(file.end(), start, start + size);
}

[[noreturn]] void JumpBack(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void Ignore(png_structp, png_const_charp) {}

void WriteHeader(png_structp png, png_infop info, const StreamFacts& facts, const PackedFormat& format) {
    // Rows are compressed here, so the library's limit on the size of a picture is of no use.
    png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);
    png_set_IHDR(png, info, facts.size.width, facts.size.height, format.bits,
                 format.components == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    // Pixels a unit: the inverse of the width and height of one.
    png_set_pHYs(png, info, facts.aspect.denominator, facts.aspect.numerator, PNG_RESOLUTION_UNKNOWN);
    char key[] = "Software";
    char value[] = "synthex";
    png_text text{};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = key;
    text.text = value;
    png_set_text(png, info, &text, 1);
    png_write_info(png, info);
}

// In a function of its own, with nothing to destroy: the library reports errors by a jump to here.
bool WritePng(std::vector<std::byte>& file, const StreamFacts& facts, const PackedFormat& format,
              std::span<const std::byte> compressed) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, JumpBack, Ignore);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    bool done = false;
    if (info && setjmp(png_jmpbuf(png)) == 0) {
        png_set_write_fn(png, &file, AppendTo, nullptr);
        WriteHeader(png, info, facts, format);
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"),
                        reinterpret_cast<png_const_bytep>(compressed.data()), compressed.size());
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
        done = true;
    }
    png_destroy_write_struct(&png, &info);
    return done;
}

// The difference of each byte to the one a pixel before it.
void FilterSub(std::span<std::byte> row, std::size_t pixelBytes) {
    for (std::size_t i = row.size() - 1; i >= pixelBytes; --i)
        row[i] =
            std::byte(std::to_integer<unsigned>(row[i]) - std::to_integer<unsigned>(row[i - pixelBytes]));
}

} // namespace

PngImage::PngImage(const StreamFacts& facts)
    : mFacts(facts), mFormat(PngFormatFor(facts)), mReader(facts, mFormat) {
    mRow.resize(1 + facts.size.width * mFormat.PixelBytes());
}

std::span<const std::byte> PngImage::Encode(const FrameView& frame) {
    const std::span<const std::byte> compressed = Compress(frame);
    mFile.clear();
    if (compressed.size() > PNG_UINT_31_MAX || !WritePng(mFile, mFacts, mFormat, compressed))
        throw Failure(fmt::format("a frame of {}x{} is too large for a PNG; export to raw", mFacts.size.width,
                                  mFacts.size.height));
    return mFile;
}

void PngImage::ReadPixels(const FrameView& frame, std::vector<std::byte>& pixels) {
    const std::size_t rowBytes = frame.width * mFormat.PixelBytes();
    pixels.resize(rowBytes * frame.height);
    mReader.Begin(frame);
    for (std::uint32_t y = 0; y < frame.height; ++y)
        mReader.Read(y, frame.width, pixels.data() + rowBytes * y);
}

std::span<const std::byte> PngImage::Compress(const FrameView& frame) {
    const std::size_t pixelBytes = mFormat.PixelBytes();
    const std::span<std::byte> pixels = std::span(mRow).subspan(1);
    mReader.Begin(frame);
    mDeflate.Begin();
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        mRow[0] = kFilterSub;
        if (mReader.RowIsUniform(y)) {
            mReader.Read(y, 1, pixels.data());
            mDeflate.AddStartAndZeros(std::span(mRow).first(1 + pixelBytes), pixels.size() - pixelBytes);
        } else {
            mReader.Read(y, frame.width, pixels.data());
            FilterSub(pixels, pixelBytes);
            mDeflate.Add(mRow);
        }
    }
    return mDeflate.End();
}

} // namespace corvane
