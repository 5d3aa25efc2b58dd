#include "PackedReader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "PixelRows.h"

namespace corvane {
namespace {

bool NeedsOnlyOrder(const StreamFacts& facts, const PackedFormat& format) {
    constexpr RK_PixelFormat kConverted = kRK_Float | kRK_YCbCr | kRK_Premultiplied | kRK_Linear;
    return (facts.raster & kConverted) == 0 && format.bits == 8;
}

// How many pixels are converted at a time: one graph of zimg, whatever the frame's size and the box's.
constexpr std::uint32_t kPixelsTogether = 2048;

PlanarFormat PlanarFor(const StreamFacts& facts, const PackedFormat& format) {
    PlanarFormat planar;
    planar.yCbCr = false;
    planar.bits = format.bits;
    planar.alpha = facts.HasAlpha() && format.components == 4;
    return planar;
}

StreamFacts FactsOfPixels(StreamFacts facts) {
    facts.size = {kPixelsTogether, 1};
    return facts;
}

template <class Sample>
void Interleave(PlaneBuffer& planes, const PackedFormat& format, std::size_t count, std::byte* out) {
    static_assert(std::endian::native == std::endian::little);
    const auto components = static_cast<std::size_t>(format.components);
    for (std::size_t part = 0; part < components; ++part) {
        const auto* const plane = reinterpret_cast<const Sample*>(planes.Row(format.order[part], 0));
        for (std::size_t x = 0; x < count; ++x) {
            Sample value = plane ? plane[x] : static_cast<Sample>(~0u);
            if (sizeof(Sample) == 2 && format.bigEndian) value = static_cast<Sample>(value << 8 | value >> 8);
            std::memcpy(out + (x * components + part) * sizeof value, &value, sizeof value);
        }
    }
}

template <std::size_t PixelBytes>
void PickAs(const std::byte* packed, const std::uint32_t* index, std::uint32_t count, std::byte* out) {
    for (std::uint32_t x = 0; x < count; ++x)
        std::memcpy(out + x * PixelBytes, packed + index[x] * PixelBytes, PixelBytes);
}

// Writes the packed pixels that `index` tells.
void Pick(const std::byte* packed, std::size_t pixelBytes, const std::uint32_t* index, std::uint32_t count,
          std::byte* out) {
    switch (pixelBytes) {
    case 3: return PickAs<3>(packed, index, count, out);
    case 4: return PickAs<4>(packed, index, count, out);
    case 6: return PickAs<6>(packed, index, count, out);
    default: return PickAs<8>(packed, index, count, out);
    }
}

// Repeats the first `size` bytes up to `whole`.
void Repeat(std::byte* out, std::size_t size, std::size_t whole) {
    for (std::size_t done = size; done < whole; done += std::min(done, whole - done))
        std::memcpy(out + done, out, std::min(done, whole - done));
}

} // namespace

PackedReader::PackedReader(const StreamFacts& facts, const PackedFormat& format)
    : mFacts(facts), mFormat(format) {
    if (NeedsOnlyOrder(facts, format)) return;
    const PlanarFormat planar = PlanarFor(facts, format);
    mConverter.emplace(FactsOfPixels(facts), planar);
    for (int plane = 0; plane < planar.Planes(); ++plane)
        mPlanes.Shape(plane, kPixelsTogether * planar.SampleBytes(), 1);
    mPending.resize(kPixelsTogether * std::size_t{BytesPerPixel(facts.raster)});
}

void PackedReader::Begin(const FrameView& frame) {
    Begin(frame, mConverter ? FindBox(frame) : Box{});
}

void PackedReader::Begin(const FrameView& frame, const Box& box) {
    mFrame = frame;
    if (!mConverter) return;
    mBox = box.Empty() ? Box{} : box;
    mPendingPixels = mPackedPixels = 0;
    mIndex.clear();
    mBoxRow.clear();
    if (BytesPerPixel(frame.format) == 4)
        AddFrame<4>();
    else
        AddFrame<16>();
    ConvertPending();
}

template <std::size_t PixelBytes>
void PackedReader::AddFrame() {
    for (std::uint32_t y = 0; y < mFrame.height; ++y) Add<PixelBytes>(mFrame.At(0, y), 1);
    for (std::uint32_t y = mBox.top; y < mBox.bottom; ++y) {
        const std::byte* const row = mFrame.At(mBox.left, y);
        const bool repeats =
            y != mBox.top && std::memcmp(row, mFrame.At(mBox.left, y - 1), mBox.Width() * PixelBytes) == 0;
        mBoxRow.push_back(repeats ? mBoxRow.back() : mIndex.size());
        if (!repeats) Add<PixelBytes>(row, mBox.Width());
    }
}

template <std::size_t PixelBytes>
void PackedReader::Add(const std::byte* pixels, std::uint32_t count) {
    const std::size_t first = mIndex.size();
    mIndex.resize(first + count);
    for (std::uint32_t x = 0; x < count; ++x, pixels += PixelBytes) {
        if (x == 0 || std::memcmp(pixels, pixels - PixelBytes, PixelBytes) != 0) {
            if (mPendingPixels == kPixelsTogether) ConvertPending();
            std::memcpy(mPending.data() + mPendingPixels++ * PixelBytes, pixels, PixelBytes);
        }
        mIndex[first + x] = static_cast<std::uint32_t>(mPackedPixels + mPendingPixels - 1);
    }
}

void PackedReader::ConvertPending() {
    FrameView pixels;
    pixels.pixels = mPending.data();
    pixels.width = kPixelsTogether;
    pixels.height = 1;
    pixels.format = mFacts.raster;
    PlanarPicture picture;
    for (int plane = 0; plane < 4; ++plane) picture.plane[std::size_t(plane)] = mPlanes.Row(plane, 0);
    mConverter->ConvertWhole(pixels, picture);
    mPacked.resize((mPackedPixels + mPendingPixels) * mFormat.PixelBytes());
    std::byte* const out = mPacked.data() + mPackedPixels * mFormat.PixelBytes();
    if (mFormat.bits == 8)
        Interleave<std::uint8_t>(mPlanes, mFormat, mPendingPixels, out);
    else
        Interleave<std::uint16_t>(mPlanes, mFormat, mPendingPixels, out);
    mPackedPixels += std::exchange(mPendingPixels, 0);
}

bool PackedReader::RowIsUniform(std::uint32_t y) const {
    return (mConverter && !IsInBox(y)) || corvane::RowIsUniform(mFrame, y);
}

void PackedReader::Read(std::uint32_t y, std::uint32_t count, std::byte* out) {
    if (!mConverter)
        return SwizzleRow(mFrame.At(0, y), count, mFacts.raster, mFormat.order, mFormat.components, out);
    const std::size_t pixelBytes = mFormat.PixelBytes();
    Pick(mPacked.data(), pixelBytes, &mIndex[y], 1, out);
    Repeat(out, pixelBytes, count * pixelBytes);
    if (IsInBox(y) && mBox.left < count)
        Pick(mPacked.data(), pixelBytes, &mIndex[mBoxRow[y - mBox.top]],
             std::min(count, mBox.right) - mBox.left, out + mBox.left * pixelBytes);
}

} // namespace corvane
