#include "LibavPixels.h"

#include <algorithm>
#include <functional>
#include <span>
#include <tuple>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
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

using Choices = std::span<const AVPixelFormat>;

// The lists to look through for a lossless codec: alpha counts more than depth, and depth more than the kind
// of color.
std::vector<Choices> LosslessChoices(const StreamFacts& facts) {
    const Choices rgb[2][2] = {{kRGB8, kRGB16}, {kRGBA8, kRGBA16}};
    const Choices yCbCr[2][2] = {{kYCbCr8, kYCbCr16}, {kYCbCrA8, kYCbCrA16}};
    std::vector<Choices> lists;
    for (const bool alpha : {true, false})
        for (const bool deep : {true, false})
            for (const bool own : {true, false})
                if ((!alpha || facts.HasAlpha()) && (!deep || facts.IsFloat()))
                    lists.push_back((facts.IsYCbCr() == own ? yCbCr : rgb)[alpha][deep]);
    return lists;
}

bool IsFullRange(AVPixelFormat format) {
    return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P;
}

std::optional<PlanarFormat> PlanarLayoutOf(AVPixelFormat format, const StreamFacts& facts) {
    const AVPixFmtDescriptor* const about = av_pix_fmt_desc_get(format);
    constexpr std::uint64_t kOther = AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                     AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
    if (about == nullptr || (about->flags & AV_PIX_FMT_FLAG_PLANAR) == 0 || (about->flags & kOther) != 0 ||
        about->nb_components < 3 || av_pix_fmt_count_planes(format) != about->nb_components ||
        about->comp[0].shift != 0 || about->log2_chroma_w > 2 || about->log2_chroma_h > 1)
        return std::nullopt;
    PlanarFormat layout;
    layout.yCbCr = (about->flags & AV_PIX_FMT_FLAG_RGB) == 0;
    layout.bits = about->comp[0].depth;
    if (layout.IsFloat() && layout.yCbCr) return std::nullopt;
    layout.subsampleW = about->log2_chroma_w;
    layout.subsampleH = about->log2_chroma_h;
    layout.fullRange = IsFullRange(format);
    layout.alpha = (about->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    // Frames without alpha have nothing to fill the plane with.
    if (layout.alpha && !facts.HasAlpha()) return std::nullopt;
    return layout;
}

// What the codec takes and these frames can fill, in the codec's order.
std::vector<AVPixelFormat> FormatsOf(const AVCodec& codec, const PixelLimits& limits,
                                     const StreamFacts& facts) {
    std::vector<AVPixelFormat> formats;
    for (const AVPixelFormat* next = codec.pix_fmts; next != nullptr && *next != AV_PIX_FMT_NONE; ++next) {
        const AVPixFmtDescriptor& about = *av_pix_fmt_desc_get(*next);
        if (LayoutOf(*next, facts) && about.comp[0].depth >= limits.leastBits &&
            about.comp[0].depth <= limits.mostBits &&
            limits.wholeChroma.value_or(about.log2_chroma_w == 0) == (about.log2_chroma_w == 0))
            formats.push_back(*next);
    }
    return formats;
}

bool Has(std::span<const AVPixelFormat> formats, AVPixelFormat format) {
    return std::ranges::find(formats, format) != formats.end();
}

// How many bits of a clip's samples are lost in a format.
int LostBits(const AVPixFmtDescriptor& about, bool forPlayers, const StreamFacts& facts) {
    const bool yCbCr = (about.flags & AV_PIX_FMT_FLAG_RGB) == 0;
    // Y'CbCr of limited range needs more than 8 bits for all levels of 8-bit R'G'B'.
    const int needed = facts.IsFloat() ? 16 : forPlayers || yCbCr == facts.IsYCbCr() ? 8 : 10;
    return std::max(needed - about.comp[0].depth, 0);
}

// Whether two formats differ in nothing but depth.
bool AreAlike(const AVPixFmtDescriptor& a, const AVPixFmtDescriptor& b) {
    constexpr std::uint64_t kKind = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_ALPHA;
    return (a.flags & kKind) == (b.flags & kKind) && a.log2_chroma_w == b.log2_chroma_w &&
           a.log2_chroma_h == b.log2_chroma_h;
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

std::vector<AVPixelFormat> ChoosePixels(const AVCodec& codec, const PixelLimits& limits,
                                        const StreamFacts& facts) {
    std::vector<AVPixelFormat> taken = FormatsOf(codec, limits, facts);
    const AVCodecDescriptor* const about = avcodec_descriptor_get(codec.id);
    const int props = about != nullptr ? about->props : 0;
    if ((props & (AV_CODEC_PROP_LOSSY | AV_CODEC_PROP_LOSSLESS)) == AV_CODEC_PROP_LOSSLESS)
        for (const Choices& list : LosslessChoices(facts))
            for (const AVPixelFormat format : list)
                if (codec.pix_fmts == nullptr || Has(taken, format)) return {format};
    if (taken.empty()) return {};
    // Pictures that refer to each other are for players, and players expect 4:2:0. Deliberate: no alpha of
    // VP8 and VP9, which lies beside the picture, in WebM alone, and is passed over by most of them.
    const bool forPlayers = (props & AV_CODEC_PROP_INTRA_ONLY) == 0 && Has(taken, AV_PIX_FMT_YUV420P);
    if (forPlayers) std::erase_if(taken, HasAlpha);
    const auto merits = [&](AVPixelFormat format) {
        const AVPixFmtDescriptor& pixels = *av_pix_fmt_desc_get(format);
        return std::tuple(facts.HasAlpha() && HasAlpha(format),
                          forPlayers ? pixels.log2_chroma_w + pixels.log2_chroma_h : 0,
                          -LostBits(pixels, forPlayers, facts));
    };
    std::ranges::stable_sort(taken, std::greater(), merits);
    std::erase_if(taken, [best = taken.front()](AVPixelFormat format) {
        return !AreAlike(*av_pix_fmt_desc_get(format), *av_pix_fmt_desc_get(best));
    });
    return taken;
}

Planes PlanesOfPicture(const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    Planes planes;
    for (int i = 0; i < av_pix_fmt_count_planes(format); ++i) {
        const int shift = i == 1 || i == 2 ? av_pix_fmt_desc_get(format)->log2_chroma_h : 0;
        planes.push_back(
            {.first = reinterpret_cast<const std::byte*>(picture.data[i]),
             .stride = picture.linesize[i],
             .rowBytes = static_cast<std::size_t>(av_image_get_linesize(format, picture.width, i)),
             .rows = static_cast<std::uint32_t>(AV_CEIL_RSHIFT(picture.height, shift))});
    }
    return planes;
}

LibavPainter::LibavPainter(const PixelLayout& layout, const StreamFacts& facts)
    : mSource(SourceFor(layout, facts)),
      mPlanarRGB(std::holds_alternative<PlanarFormat>(layout) && !std::get<PlanarFormat>(layout).yCbCr) {}

void LibavPainter::Paint(const FrameView& frame, AVFrame& picture, PaintedRows& painted) {
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
    std::get<PictureConverter>(mSource).Convert(frame, planes, painted);
}

} // namespace corvane
