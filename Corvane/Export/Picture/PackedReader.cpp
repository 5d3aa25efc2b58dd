#include "PackedReader.h"

#include <bit>
#include <cstring>

#include "PixelRows.h"

namespace corvane {
namespace {

bool NeedsOnlyOrder(const StreamFacts& facts, const PackedFormat& format) {
    constexpr RK_PixelFormat kConverted = kRK_Float | kRK_YCbCr | kRK_Premultiplied | kRK_Linear;
    return (facts.raster & kConverted) == 0 && format.bits == 8;
}

template <class Sample>
void Interleave(const Sample* const (&planes)[4], const PackedFormat& format, std::uint32_t count,
                std::byte* out) {
    static_assert(std::endian::native == std::endian::little);
    const auto components = static_cast<std::size_t>(format.components);
    for (std::size_t part = 0; part < components; ++part) {
        const Sample* const plane = planes[format.order[part]];
        for (std::size_t x = 0; x < count; ++x) {
            Sample value = plane ? plane[x] : static_cast<Sample>(~0u);
            if (sizeof(Sample) == 2 && format.bigEndian) value = static_cast<Sample>(value << 8 | value >> 8);
            std::memcpy(out + (x * components + part) * sizeof value, &value, sizeof value);
        }
    }
}

} // namespace

PackedReader::PackedReader(const StreamFacts& facts, const PackedFormat& format)
    : mFacts(facts), mFormat(format) {
    if (NeedsOnlyOrder(facts, format)) return;
    PlanarFormat planar;
    planar.yCbCr = false;
    planar.bits = format.bits;
    planar.alpha = facts.HasAlpha() && format.components == 4;
    mConverter.emplace(facts, planar);
    for (int plane = 0; plane < planar.Planes(); ++plane)
        mPlanes.Shape(plane, facts.size.width * planar.SampleBytes(), facts.size.height);
}

void PackedReader::Begin(const FrameView& frame) {
    mFrame = frame;
    if (!mConverter) return;
    PlanarPicture picture;
    const zimg_image_buffer planes = mPlanes.AsZimg();
    for (std::size_t plane = 0; plane < 4; ++plane) {
        picture.plane[plane] = static_cast<std::byte*>(planes.plane[plane].data);
        picture.stride[plane] = planes.plane[plane].stride;
    }
    mConverter->Convert(frame, picture, mPainted);
}

void PackedReader::Read(std::uint32_t y, std::uint32_t count, std::byte* out) {
    if (!mConverter) {
        SwizzleRow(mFrame.At(0, y), count, mFacts.raster, mFormat.order, mFormat.components, out);
    } else if (mFormat.bits == 8) {
        const std::uint8_t* planes[4];
        for (int i = 0; i < 4; ++i) planes[i] = reinterpret_cast<std::uint8_t*>(mPlanes.Row(i, y));
        Interleave(planes, mFormat, count, out);
    } else {
        const std::uint16_t* planes[4];
        for (int i = 0; i < 4; ++i) planes[i] = reinterpret_cast<std::uint16_t*>(mPlanes.Row(i, y));
        Interleave(planes, mFormat, count, out);
    }
}

} // namespace corvane
