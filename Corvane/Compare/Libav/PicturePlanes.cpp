#include "PicturePlanes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

#include "Export/Picture/AlignedBytes.h"

namespace corvane {
namespace {

bool Has(const AVPixFmtDescriptor& about, std::uint64_t flag) {
    return (about.flags & flag) != 0;
}

bool IsPaletted(const AVPixFmtDescriptor& about) {
    return Has(about, AV_PIX_FMT_FLAG_PAL);
}

bool IsGray(const AVPixFmtDescriptor& about) {
    return about.nb_components < 3 && !IsPaletted(about);
}

PlanarFormat FormatOf(const AVPixFmtDescriptor& about, bool fullRange) {
    PlanarFormat format;
    format.yCbCr = !Has(about, AV_PIX_FMT_FLAG_RGB) && !IsPaletted(about);
    format.bits = std::clamp(about.comp[0].depth, 8, 16);
    format.subsampleW = IsGray(about) ? 1 : about.log2_chroma_w;
    format.subsampleH = IsGray(about) ? 1 : about.log2_chroma_h;
    // Black and white, and floats, have no room beyond them.
    format.fullRange = format.yCbCr && (fullRange || Has(about, AV_PIX_FMT_FLAG_FLOAT) ||
                                        (IsGray(about) && about.comp[0].depth == 1));
    format.alpha = Has(about, AV_PIX_FMT_FLAG_ALPHA);
    return format;
}

/// Which component of libav's a plane is; negative for the chroma of gray, which there is not.
int ComponentOf(const AVPixFmtDescriptor& about, int plane) {
    if (!IsGray(about)) return plane;
    return plane == 0 ? 0 : plane == 3 ? 1 : -1;
}

/// Whether samples lie in bytes, or words of this machine, that hold nothing else.
bool IsSimple(const AVPixFmtDescriptor& about) {
    constexpr std::uint64_t kOther = AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_FLOAT | AV_PIX_FMT_FLAG_PAL;
    static_assert(std::endian::native == std::endian::little);
    return !Has(about, kOther) && (!Has(about, AV_PIX_FMT_FLAG_BE) || about.comp[0].depth == 8);
}

/// Whether a plane of libav's is one of ours as it stands.
bool IsDirect(const AVPixFmtDescriptor& about, const AVComponentDescriptor& component,
              const PlanarFormat& format) {
    return IsSimple(about) && component.shift == 0 && component.offset == 0 &&
           component.depth == format.bits && component.step == static_cast<int>(format.SampleBytes());
}

template <int Step>
void GatherBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) to[i] = from[i * Step];
}

template <int Step>
void GatherWords(const std::uint8_t* from, std::size_t count, int shift, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t sample;
        std::memcpy(&sample, from + i * Step, 2);
        sample = static_cast<std::uint16_t>(sample >> shift);
        std::memcpy(to + 2 * i, &sample, 2);
    }
}

/// The usual ways in which samples lie beside others. Returns false for all else.
bool Gather(const std::uint8_t* from, const AVComponentDescriptor& component, std::size_t count,
            std::uint8_t* to) {
    from += component.offset;
    if (component.depth == 8 && component.shift == 0) {
        switch (component.step) {
        case 2: GatherBytes<2>(from, count, to); return true;
        case 3: GatherBytes<3>(from, count, to); return true;
        case 4: GatherBytes<4>(from, count, to); return true;
        default: return false;
        }
    }
    if (component.depth <= 8 || component.depth + component.shift != 16) return false;
    switch (component.step) {
    case 2: GatherWords<2>(from, count, component.shift, to); return true;
    case 4: GatherWords<4>(from, count, component.shift, to); return true;
    case 6: GatherWords<6>(from, count, component.shift, to); return true;
    case 8: GatherWords<8>(from, count, component.shift, to); return true;
    default: return false;
    }
}

/// Reads rows of one component of a picture, whatever libav's pixel format is.
class ComponentReader {
  public:
    ComponentReader(const AVFrame& frame, const AVPixFmtDescriptor& about, const PlanarFormat& format,
                    int component)
        : mFrame(frame), mAbout(about), mFormat(format), mComponent(component) {}

    void Read(std::uint32_t y, std::size_t count, std::uint8_t* to) {
        const AVComponentDescriptor& component = mAbout.comp[mComponent];
        const std::uint8_t* const row =
            mFrame.data[component.plane] + std::ptrdiff_t{mFrame.linesize[component.plane]} * y;
        if (IsPaletted(mAbout)) {
            ReadPaletted(row, count, to);
        } else if (!IsSimple(mAbout) || !Gather(row, component, count, to)) {
            ReadAny(y, count);
            for (std::size_t i = 0; i < count; ++i) Store(mLine[i], i, to);
        }
    }

  private:
    void ReadPaletted(const std::uint8_t* row, std::size_t count, std::uint8_t* to) const {
        constexpr int kByteOf[] = {2, 1, 0, 3}; // of R, G, B, A in a word of the palette
        for (std::size_t i = 0; i < count; ++i) to[i] = mFrame.data[1][4 * row[i] + kByteOf[mComponent]];
    }

    void ReadAny(std::uint32_t y, std::size_t count) {
        mLine.resize(count);
        const std::uint8_t* data[4] = {mFrame.data[0], mFrame.data[1], mFrame.data[2], mFrame.data[3]};
        av_read_image_line2(mLine.data(), data, mFrame.linesize, &mAbout, 0, static_cast<int>(y), mComponent,
                            static_cast<int>(count), 0, sizeof(std::uint32_t));
    }

    void Store(std::uint32_t sample, std::size_t at, std::uint8_t* to) const {
        const int depth = mAbout.comp[mComponent].depth;
        const std::uint32_t most = (1u << mFormat.bits) - 1;
        if (Has(mAbout, AV_PIX_FMT_FLAG_FLOAT)) {
            const float value = std::bit_cast<float>(sample);
            sample = value > 0 ? static_cast<std::uint32_t>(std::lround(std::min(value, 1.0f) * 65535)) : 0;
        } else if (depth < mFormat.bits) {
            const std::uint32_t full = (1u << depth) - 1;
            // Deliberate: 1-bit pictures may say by 1 that a pixel is black.
            if (mFrame.format == AV_PIX_FMT_MONOWHITE) sample ^= full;
            sample = (sample * most + full / 2) / full;
        }
        if (mFormat.bits == 8) {
            to[at] = static_cast<std::uint8_t>(sample);
        } else {
            const auto word = static_cast<std::uint16_t>(sample);
            std::memcpy(to + 2 * at, &word, 2);
        }
    }

    const AVFrame& mFrame;
    const AVPixFmtDescriptor& mAbout;
    const PlanarFormat& mFormat;
    const int mComponent;
    std::vector<std::uint32_t> mLine;
};

void FillNeutral(const PlanarFormat& format, std::size_t count, std::uint8_t* to) {
    const auto neutral = static_cast<std::uint16_t>(1u << (format.bits - 1));
    for (std::size_t i = 0; i < count; ++i)
        if (format.bits == 8)
            to[i] = static_cast<std::uint8_t>(neutral);
        else
            std::memcpy(to + 2 * i, &neutral, 2);
}

} // namespace

bool PicturePlanes::Knows(int format) {
    const AVPixFmtDescriptor* const about = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    constexpr std::uint64_t kOther = AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
    return about != nullptr && !Has(*about, kOther) && format != AV_PIX_FMT_XYZ12LE &&
           format != AV_PIX_FMT_XYZ12BE;
}

void PicturePlanes::Take(const std::shared_ptr<const AVFrame>& frame, bool fullRange, VideoPicture& picture) {
    const AVPixFmtDescriptor& about = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame->format));
    const PlanarFormat format = FormatOf(about, fullRange);
    picture.format = format;
    picture.size = {static_cast<std::uint32_t>(frame->width), static_cast<std::uint32_t>(frame->height)};
    // First what stands as it is, and how much room the rest takes.
    std::array<std::size_t, 4> start{};
    std::size_t size = 0;
    for (int plane = 0; plane < format.Planes(); ++plane) {
        const auto at = static_cast<std::size_t>(plane);
        const int component = ComponentOf(about, plane);
        if (component >= 0 && IsDirect(about, about.comp[component], format)) {
            const int from = about.comp[component].plane;
            picture.plane[at] = reinterpret_cast<const std::byte*>(frame->data[from]);
            picture.stride[at] = frame->linesize[from];
            continue;
        }
        const std::size_t row = Aligned(format.PlaneWidth(plane, picture.size.width) * format.SampleBytes());
        picture.plane[at] = nullptr;
        picture.stride[at] = component < 0 ? 0 : static_cast<std::ptrdiff_t>(row);
        start[at] = size;
        size += row * (component < 0 ? 1 : format.PlaneHeight(plane, picture.size.height));
    }
    if (!format.alpha) picture.plane[3] = nullptr;
    if (size == 0) {
        picture.owner = frame;
        return;
    }
    const std::shared_ptr<Bytes> room = Room(size);
    picture.owner =
        std::make_shared<std::pair<std::shared_ptr<const AVFrame>, std::shared_ptr<Bytes>>>(frame, room);
    TakeApart(*frame, start, *room, picture);
}

/// Fills the planes that the frame does not have as they are: plane `i` from `start[i]` of `room` on.
void PicturePlanes::TakeApart(const AVFrame& frame, const std::array<std::size_t, 4>& start, Bytes& room,
                              VideoPicture& picture) {
    const AVPixFmtDescriptor& about = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const PlanarFormat& format = picture.format;
    for (int plane = 0; plane < format.Planes(); ++plane) {
        const auto at = static_cast<std::size_t>(plane);
        if (picture.plane[at] != nullptr) continue;
        auto* to = reinterpret_cast<std::uint8_t*>(room.data() + start[at]);
        picture.plane[at] = room.data() + start[at];
        const std::size_t width = format.PlaneWidth(plane, picture.size.width);
        const int component = ComponentOf(about, plane);
        if (component < 0) {
            FillNeutral(format, width, to);
            continue;
        }
        ComponentReader reader(frame, about, format, component);
        for (std::uint32_t y = 0; y < format.PlaneHeight(plane, picture.size.height); ++y)
            reader.Read(y, width, to + picture.stride[at] * std::ptrdiff_t{y});
    }
}

std::shared_ptr<PicturePlanes::Bytes> PicturePlanes::Room(std::size_t size) {
    std::unique_ptr<Bytes> bytes;
    {
        const std::lock_guard lock(mFree->mutex);
        if (!mFree->bytes.empty()) {
            bytes = std::move(mFree->bytes.back());
            mFree->bytes.pop_back();
        }
    }
    if (!bytes) bytes = std::make_unique<Bytes>();
    bytes->resize(size);
    const auto giveBack = [free = mFree](Bytes* used) {
        std::unique_ptr<Bytes> owned(used);
        const std::lock_guard lock(free->mutex);
        try {
            free->bytes.push_back(std::move(owned));
        } catch (const std::bad_alloc&) {
            // It is made anew when it is needed.
        }
    };
    return {bytes.release(), giveBack};
}

} // namespace corvane
