#include "LibavPixels.h"

#include <algorithm>
#include <span>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

namespace corvane {
namespace {

struct PackedRow {
    AVPixelFormat format;
    PackedFormat layout;
};

constexpr PackedRow kPacked[] = {
    {AV_PIX_FMT_BGRA, {{2, 1, 0, 3}, 4, 8, false}},      {AV_PIX_FMT_BGR0, {{2, 1, 0, 3}, 4, 8, false}},
    {AV_PIX_FMT_RGBA, {{0, 1, 2, 3}, 4, 8, false}},      {AV_PIX_FMT_RGB0, {{0, 1, 2, 3}, 4, 8, false}},
    {AV_PIX_FMT_ARGB, {{3, 0, 1, 2}, 4, 8, false}},      {AV_PIX_FMT_0RGB, {{3, 0, 1, 2}, 4, 8, false}},
    {AV_PIX_FMT_ABGR, {{3, 2, 1, 0}, 4, 8, false}},      {AV_PIX_FMT_0BGR, {{3, 2, 1, 0}, 4, 8, false}},
    {AV_PIX_FMT_RGB24, {{0, 1, 2, 3}, 3, 8, false}},     {AV_PIX_FMT_BGR24, {{2, 1, 0, 3}, 3, 8, false}},
    {AV_PIX_FMT_RGBA64LE, {{0, 1, 2, 3}, 4, 16, false}}, {AV_PIX_FMT_RGB48LE, {{0, 1, 2, 3}, 3, 16, false}},
    {AV_PIX_FMT_RGBA64BE, {{0, 1, 2, 3}, 4, 16, true}},  {AV_PIX_FMT_RGB48BE, {{0, 1, 2, 3}, 3, 16, true}},
};

// Best first.
constexpr AVPixelFormat kRGB8[] = {AV_PIX_FMT_BGR0,  AV_PIX_FMT_RGB0,  AV_PIX_FMT_0RGB,
                                   AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24, AV_PIX_FMT_GBRP};
constexpr AVPixelFormat kRGBA8[] = {AV_PIX_FMT_BGRA, AV_PIX_FMT_RGBA, AV_PIX_FMT_ARGB, AV_PIX_FMT_GBRAP};
constexpr AVPixelFormat kRGB16[] = {AV_PIX_FMT_GBRP16, AV_PIX_FMT_RGB48LE, AV_PIX_FMT_RGB48BE,
                                    AV_PIX_FMT_GBRP14, AV_PIX_FMT_GBRP12,  AV_PIX_FMT_GBRP10};
constexpr AVPixelFormat kRGBA16[] = {AV_PIX_FMT_GBRAP16, AV_PIX_FMT_RGBA64LE, AV_PIX_FMT_RGBA64BE,
                                     AV_PIX_FMT_GBRAP12, AV_PIX_FMT_GBRAP10};
constexpr AVPixelFormat kYCbCr8[] = {AV_PIX_FMT_YUV444P};
constexpr AVPixelFormat kYCbCrA8[] = {AV_PIX_FMT_YUVA444P};
constexpr AVPixelFormat kYCbCr16[] = {AV_PIX_FMT_YUV444P16, AV_PIX_FMT_YUV444P14, AV_PIX_FMT_YUV444P12,
                                      AV_PIX_FMT_YUV444P10};
constexpr AVPixelFormat kYCbCrA16[] = {AV_PIX_FMT_YUVA444P16, AV_PIX_FMT_YUVA444P12, AV_PIX_FMT_YUVA444P10};
constexpr AVPixelFormat kForPlayers[] = {AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUV422P,  AV_PIX_FMT_YUV422P10,
                                         AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV444P,  AV_PIX_FMT_YUV444P10,
                                         AV_PIX_FMT_YUVJ420P,  AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_RGB24};

using Choices = std::span<const AVPixelFormat>;

// The lists to look through, for a lossless codec.
std::vector<Choices> LosslessChoices(const StreamFacts& facts) {
    Choices plain8 = kRGB8, alpha8 = kRGBA8, plain16 = kRGB16, alpha16 = kRGBA16;
    if (facts.IsYCbCr()) plain8 = kYCbCr8, alpha8 = kYCbCrA8, plain16 = kYCbCr16, alpha16 = kYCbCrA16;
    std::vector<Choices> lists;
    if (facts.IsFloat() && facts.HasAlpha()) lists.push_back(alpha16);
    if (facts.IsFloat()) lists.push_back(plain16);
    if (facts.HasAlpha()) lists.push_back(alpha8);
    lists.push_back(plain8);
    if (facts.IsYCbCr()) lists.push_back(kRGB8);
    return lists;
}

bool IsFullRange(AVPixelFormat format) {
    return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P;
}

std::optional<PlanarFormat> PlanarLayoutOf(AVPixelFormat format, const StreamFacts& facts) {
    const AVPixFmtDescriptor* const about = av_pix_fmt_desc_get(format);
    constexpr std::uint64_t kOther = AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                     AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_FLOAT | AV_PIX_FMT_FLAG_BAYER;
    if (about == nullptr || (about->flags & AV_PIX_FMT_FLAG_PLANAR) == 0 || (about->flags & kOther) != 0 ||
        about->nb_components < 3 || av_pix_fmt_count_planes(format) != about->nb_components ||
        about->comp[0].shift != 0 || about->log2_chroma_w > 2 || about->log2_chroma_h > 1)
        return std::nullopt;
    PlanarFormat layout;
    layout.yCbCr = (about->flags & AV_PIX_FMT_FLAG_RGB) == 0;
    layout.bits = about->comp[0].depth;
    layout.subsampleW = about->log2_chroma_w;
    layout.subsampleH = about->log2_chroma_h;
    layout.fullRange = IsFullRange(format);
    layout.alpha = (about->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    // Frames without alpha have nothing to fill the plane with.
    if (layout.alpha && !facts.HasAlpha()) return std::nullopt;
    return layout;
}

std::variant<PictureConverter, PackedReader> SourceFor(const PixelLayout& layout, const StreamFacts& facts) {
    if (const auto* planar = std::get_if<PlanarFormat>(&layout)) return PictureConverter(facts, *planar);
    return PackedReader(facts, std::get<PackedFormat>(layout));
}

} // namespace

std::optional<PixelLayout> LayoutOf(AVPixelFormat format, const StreamFacts& facts) {
    for (const PackedRow& row : kPacked)
        if (row.format == format) return row.layout;
    if (const auto planar = PlanarLayoutOf(format, facts)) return *planar;
    return std::nullopt;
}

bool HasAlpha(AVPixelFormat format) {
    const AVPixFmtDescriptor* const about = av_pix_fmt_desc_get(format);
    return about != nullptr && (about->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

AVPixelFormat ChoosePixels(const AVPixelFormat* supported, bool lossless, const StreamFacts& facts) {
    const auto takes = [supported](AVPixelFormat format) {
        if (supported == nullptr) return true;
        for (const AVPixelFormat* next = supported; *next != AV_PIX_FMT_NONE; ++next)
            if (*next == format) return true;
        return false;
    };
    std::vector<Choices> lists;
    if (lossless) lists = LosslessChoices(facts);
    lists.push_back(kForPlayers);
    for (const Choices& list : lists)
        for (const AVPixelFormat format : list)
            if (takes(format) && LayoutOf(format, facts)) return format;
    for (const AVPixelFormat* next = supported; next != nullptr && *next != AV_PIX_FMT_NONE; ++next)
        if (LayoutOf(*next, facts)) return *next;
    return AV_PIX_FMT_NONE;
}

LibavPainter::LibavPainter(const PixelLayout& layout, const StreamFacts& facts)
    : mSource(SourceFor(layout, facts)),
      mPlanarRGB(std::holds_alternative<PlanarFormat>(layout) && !std::get<PlanarFormat>(layout).yCbCr) {}

void LibavPainter::Paint(const FrameView& frame, AVFrame& picture) {
    if (auto* const reader = std::get_if<PackedReader>(&mSource)) {
        reader->Begin(frame);
        for (std::uint32_t y = 0; y < frame.height; ++y)
            reader->Read(y, frame.width,
                         reinterpret_cast<std::byte*>(picture.data[0]) +
                             std::ptrdiff_t{picture.linesize[0]} * y);
        return;
    }
    constexpr std::size_t kInOrder[] = {0, 1, 2, 3};
    constexpr std::size_t kGBR[] = {2, 0, 1, 3};
    PlanarPicture planes;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t from = (mPlanarRGB ? kGBR : kInOrder)[i];
        planes.plane[i] = reinterpret_cast<std::byte*>(picture.data[from]);
        planes.stride[i] = picture.linesize[from];
    }
    std::get<PictureConverter>(mSource).Convert(frame, planes);
}

} // namespace corvane
