#include "LibavEncoder.h"

#include <algorithm>
#include <new>
#include <string>
#include <tuple>

#include <fmt/format.h>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "Engine/Failure.h"
#include "Export/Targets/ExportKinds.h"
#include "LibavThreads.h"

namespace corvane {
namespace {

constexpr int kRowAlignment = 64;
constexpr int kBitstreamSlack = 64; // encoders may read a little past the last row

AVRational Rational(std::uint32_t numerator, std::uint32_t denominator) {
    return {static_cast<int>(numerator), static_cast<int>(denominator)};
}

// Of frames that hold both fields: TB means that the top field is displayed first, BT that the bottom field
// is.
AVFieldOrder FieldOrderOf(FieldOrder order) {
    switch (order) {
    case FieldOrder::kUpperFirst: return AV_FIELD_TB;
    case FieldOrder::kLowerFirst: return AV_FIELD_BT;
    default: return AV_FIELD_PROGRESSIVE;
    }
}

PixelLimits LimitsOf(const CodecChoice& choice) {
    const std::string_view encoder = choice.codec->name;
    PixelLimits limits;
    const auto rows = ExportCodecs();
    const auto row = std::ranges::find(rows, encoder, &ExportCodec::encoder);
    if (row != rows.end()) limits.leastBits = row->leastBits, limits.mostBits = row->mostBits;
    // The profiles of ProRes stand for 4:2:2 or 4:4:4; the encoder would take either with any.
    const auto profile = choice.options.find("profile");
    if (encoder == "prores_ks" && profile != choice.options.end() && profile->second != "auto")
        limits.wholeChroma = profile->second.starts_with('4') || profile->second == "5";
    return limits;
}

// The formats to try, best first.
std::vector<AVPixelFormat> PixelsFor(CodecChoice& choice, const StreamFacts& facts) {
    const std::string wanted = choice.Take("pix_fmt");
    std::vector<AVPixelFormat> formats;
    if (wanted.empty())
        formats = ChoosePixels(*choice.codec, LimitsOf(choice), facts);
    else if (const AVPixelFormat format = av_get_pix_fmt(wanted.c_str()); LayoutOf(format, facts))
        formats = {format};
    if (formats.empty())
        throw UsageFailure(
            fmt::format("codec {}: frames of this clip can't be converted to {}; choose another pix_fmt",
                        choice.codec->name, wanted.empty() ? "what it takes" : wanted));
    return formats;
}

// Adds parameters that an encoder has under one option, before those that were asked for: the last one
// counts.
void AddParameters(std::string& option, const std::string& parameters) {
    option = option.empty() ? parameters : parameters + ':' + option;
}

void SetDefaults(CodecChoice& choice, FieldOrder order) {
    const std::string_view encoder = choice.codec->name;
    auto& options = choice.options;
    // It would print what it is and does, past libav's log.
    if (encoder == "libx265") AddParameters(options["x265-params"], "log-level=none");
    if (encoder == "exr") options.try_emplace("compression", "zip16");
    if (encoder == "tiff") options.try_emplace("compression_algo", "deflate");
    if (encoder != "libx264") return;
    const H264Settings usual;
    options.try_emplace("preset", usual.preset);
    if (!options.contains("b") && !options.contains("qp"))
        options.try_emplace("crf", std::to_string(usual.quality));
    if (order == FieldOrder::kProgressive) return;
    // The flag for interlaced coding alone would mean top first.
    AddParameters(options["x264-params"], order == FieldOrder::kLowerFirst ? "bff=1" : "tff=1");
}

// The only picture of a clip was seen to come with a time of decoding that was nothing but what was in
// memory, which no container takes. None is decoded after it is shown, nor longer before than a codec can
// hold it back.
void MendTimes(AVPacket& packet) {
    constexpr std::int64_t kHeldBack = 64; // pictures: more than any codec does
    if (packet.pts == AV_NOPTS_VALUE || packet.dts == AV_NOPTS_VALUE) return;
    if (packet.dts > packet.pts || packet.dts < packet.pts - kHeldBack) packet.dts = packet.pts;
}

} // namespace

LibavEncoder::LibavEncoder(const LibavRequest& request, CodecChoice choice, bool globalHeader,
                           const LibavLog& log)
    : mFacts(request.facts), mName(request.output.string()), mCodec(*choice.codec),
      mGlobalHeader(globalHeader), mLog(log), mPacket(av_packet_alloc()) {
    if (!mPacket) throw std::bad_alloc();
    Open(choice);
    const int size =
        av_image_get_buffer_size(mContext->pix_fmt, mContext->width, mContext->height, kRowAlignment);
    mPool.reset(av_buffer_pool_init(static_cast<std::size_t>(size) + kBitstreamSlack, av_buffer_alloc));
    if (size < 0 || !mPool) throw std::bad_alloc();
}

LibavEncoder::~LibavEncoder() {
    // SVT-AV1 waits forever if it is closed before it was told that no more pictures come, or before the
    // first one came. It is left to the end of the process.
    if (!mEnded && std::string_view(mCodec.name) == "libsvtav1") std::ignore = mContext.release();
}

void LibavEncoder::Describe(const StreamFacts& facts) {
    AVCodecContext& context = *mContext;
    context.width = static_cast<int>(facts.size.width);
    context.height = static_cast<int>(facts.size.height);
    context.framerate = Rational(facts.rate.scale, facts.rate.sampleSize);
    context.time_base = av_inv_q(context.framerate);
    context.sample_aspect_ratio = Rational(facts.aspect.numerator, facts.aspect.denominator);
    context.field_order = FieldOrderOf(facts.order);
    if (facts.Interlaced()) context.flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    const auto* const planar = std::get_if<PlanarFormat>(&mLayout);
    const bool yCbCr = planar != nullptr && planar->yCbCr;
    context.color_range = yCbCr && !planar->fullRange ? AVCOL_RANGE_MPEG : AVCOL_RANGE_JPEG;
    context.colorspace = yCbCr ? static_cast<AVColorSpace>(facts.tags.matrix) : AVCOL_SPC_RGB;
    context.color_primaries = static_cast<AVColorPrimaries>(facts.tags.primaries);
    context.color_trc = planar != nullptr && planar->IsFloat()
                            ? AVCOL_TRC_LINEAR
                            : static_cast<AVColorTransferCharacteristic>(facts.tags.transfer);
    if (yCbCr && planar->subsampleW != 0) context.chroma_sample_location = AVCHROMA_LOC_LEFT;
    if (mGlobalHeader) context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
}

void LibavEncoder::Open(CodecChoice& choice) {
    const std::vector<AVPixelFormat> formats = PixelsFor(choice, mFacts);
    SetDefaults(choice, mFacts.order);
    int error = 0;
    for (const bool few : {false, true}) {
        if (few) KeepToFewThreads(choice);
        const unsigned threads = MostThreads(mCodec, few);
        if (!CanStartThreads(threads)) {
            if (few && error == 0) FailForThreads(threads);
            continue;
        }
        for (const AVPixelFormat format : formats) {
            error = TryToOpen(format, choice);
            if (error >= 0) return;
        }
    }
    FailToOpen(WithMemory(error));
}

int LibavEncoder::TryToOpen(AVPixelFormat format, const CodecChoice& choice) {
    mLog.Clear();
    mContext.reset(avcodec_alloc_context3(&mCodec));
    if (!mContext) throw std::bad_alloc();
    mContext->pix_fmt = format;
    mContext->thread_count = 0; // as many as the machine is good for, unless an option says otherwise
    mLayout = *LayoutOf(format, mFacts);
    Describe(mFacts);
    LibavOptions options;
    for (const auto& [name, value] : choice.options) options.Set(name, value);
    const int error = avcodec_open2(mContext.get(), &mCodec, options.Get());
    if (const std::string unknown = options.Left(); error >= 0 && !unknown.empty())
        throw UsageFailure(fmt::format("codec {} has no option {}; see `ffmpeg -h encoder={}`", mCodec.name,
                                       unknown, mCodec.name));
    return error;
}

void LibavEncoder::FailToOpen(int error) const {
    const char* const codec = mCodec.name;
    const auto* const planar = std::get_if<PlanarFormat>(&mLayout);
    const std::uint32_t columns = planar != nullptr ? 1u << planar->subsampleW : 1;
    const std::uint32_t rows =
        planar != nullptr ? (1u << planar->subsampleH) * (mFacts.Interlaced() ? 2 : 1) : 1;
    if (mFacts.size.width % columns != 0 || mFacts.size.height % rows != 0)
        throw Failure(
            fmt::format("{}: {} can't encode frames of {}x{} as {}: their width must be a multiple of {} and "
                        "their height of {}; change the clip's size, or choose codec ffv1 in mkv",
                        mName, codec, mFacts.size.width, mFacts.size.height,
                        av_get_pix_fmt_name(mContext->pix_fmt), columns, rows));
    throw Failure(fmt::format("{}: {} can't encode this clip: {}; choose another codec or other options",
                              mName, codec, mLog.Reason(error)));
}

void LibavEncoder::FailForThreads(unsigned count) const {
    throw Failure(
        fmt::format("{}: {} needs {}, which the system does not let it start; end other programs, raise "
                    "the limit of processes or choose another codec",
                    mName, mCodec.name, count == 1 ? "a thread" : fmt::format("{} threads", count)));
}

void LibavEncoder::NewPicture(AVFrame& picture) const {
    const AVCodecContext& context = *mContext;
    av_frame_unref(&picture);
    picture.buf[0] = av_buffer_pool_get(mPool.get());
    if (picture.buf[0] == nullptr) throw std::bad_alloc();
    picture.format = context.pix_fmt;
    picture.width = context.width;
    picture.height = context.height;
    av_image_fill_arrays(picture.data, picture.linesize, picture.buf[0]->data, context.pix_fmt, context.width,
                         context.height, kRowAlignment);
    picture.extended_data = picture.data;
    picture.sample_aspect_ratio = context.sample_aspect_ratio;
    picture.interlaced_frame = mFacts.Interlaced();
    picture.top_field_first = mFacts.order == FieldOrder::kUpperFirst;
    picture.color_range = context.color_range;
    picture.colorspace = context.colorspace;
    picture.color_primaries = context.color_primaries;
    picture.color_trc = context.color_trc;
    picture.chroma_location = context.chroma_sample_location;
}

void LibavEncoder::Encode(const AVFrame* picture, const Sink& sink) {
    mEnded = picture == nullptr;
    int error = WithMemory(avcodec_send_frame(mContext.get(), picture));
    while (error >= 0) {
        error = WithMemory(avcodec_receive_packet(mContext.get(), mPacket.get()));
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return;
        if (error < 0) break;
        MendTimes(*mPacket);
        sink(*mPacket);
    }
    throw Failure(fmt::format("{}: {} failed: {}; choose another codec or other options", mName, mCodec.name,
                              mLog.Reason(error)));
}

LibavPicture::LibavPicture(const LibavEncoder& encoder, const StreamFacts& facts)
    : mEncoder(encoder), mPainter(encoder.Layout(), facts), mPicture(av_frame_alloc()) {
    if (!mPicture) throw std::bad_alloc();
}

void LibavPicture::Paint(const FrameView& frame) {
    if (av_frame_is_writable(mPicture.get()) == 0) {
        mPainted = {};
        mEncoder.NewPicture(*mPicture);
    }
    mPainter.Paint(frame, *mPicture, mPainted);
}

} // namespace corvane
