#include <new>
#include <string>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <fmt/format.h>

#include "PicturePlanes.h"
#include "VideoInput.h"

namespace corvane {
namespace {

/// Pictures of more pixels are decoded by threads that share one, and not by threads that have one each.
constexpr std::int64_t kLargePicture = 40'000'000;

class LibavVideo final : public Video {
  public:
    LibavVideo(const std::filesystem::path& path, const std::atomic<bool>* cancel)
        : mInput(path, cancel, mLog), mFacts(mInput.Facts()), mPacket(av_packet_alloc()) {
        if (!mPacket) throw std::bad_alloc();
        OpenDecoder();
    }

    const VideoFacts& Facts() const override { return mFacts; }

    void Stop() override { mInput.Stop(); }

    bool Next(VideoPicture& picture) override {
        while (!mEnded) {
            const std::shared_ptr<AVFrame> frame(av_frame_alloc(), LibavFree());
            if (!frame) throw std::bad_alloc();
            const int result = WithMemory(avcodec_receive_frame(mDecoder.get(), frame.get()));
            if (result >= 0) {
                Show(frame, picture);
                return true;
            }
            if (result == AVERROR(EAGAIN))
                Feed();
            else if (result == AVERROR_EOF)
                End();
            else
                NoteDamage(result);
        }
        return false;
    }

    bool SeekBefore(std::int64_t time) override {
        if (!mInput.SeekBefore(time)) return false;
        avcodec_flush_buffers(mDecoder.get());
        mEnded = mDamaged = false;
        return true;
    }

  private:
    void OpenDecoder() {
        const AVStream& stream = mInput.Stream();
        const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
        if (codec == nullptr)
            mInput.Fail(
                fmt::format("libav can't decode {}; convert it to a codec that it can", mFacts.codec));
        mDecoder.reset(avcodec_alloc_context3(codec));
        if (!mDecoder) throw std::bad_alloc();
        AVCodecContext& decoder = *mDecoder;
        WithMemory(avcodec_parameters_to_context(&decoder, stream.codecpar));
        decoder.pkt_timebase = stream.time_base;
        decoder.thread_count = 0; // as many as there are processors
        if (std::int64_t{decoder.width} * decoder.height > kLargePicture)
            decoder.thread_type = FF_THREAD_SLICE;
        decoder.flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT | AV_CODEC_FLAG_UNALIGNED;
        if (const int result = WithMemory(avcodec_open2(&decoder, codec, nullptr)); result < 0)
            mInput.Fail(fmt::format("{} can't be decoded ({}); convert it to another codec", mFacts.codec,
                                    mLog.Reason(result)));
        NameFormat(decoder.pix_fmt);
    }

    void NameFormat(int format) {
        const char* const name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(format));
        mFacts.pixelFormat = name != nullptr ? name : "";
    }

    /// Hands the decoder what it asks for.
    void Feed() {
        if (!mInput.Next(*mPacket)) {
            mFacts.whyCut = mInput.WhyCut();
            av_packet_unref(mPacket.get());
            avcodec_send_packet(mDecoder.get(), nullptr);
            return;
        }
        const int result = WithMemory(avcodec_send_packet(mDecoder.get(), mPacket.get()));
        av_packet_unref(mPacket.get());
        if (result < 0) NoteDamage(result);
    }

    void NoteDamage(int result) {
        mDamaged = true;
        if (mReason.empty()) mReason = mLog.Reason(result);
    }

    void End() {
        mEnded = true;
        if (mShown) return;
        const std::string& why = mReason.empty() ? mFacts.whyCut : mReason;
        mInput.Fail(
            fmt::format("no picture of it can be decoded{}; it is empty, cut or damaged: make it anew",
                        why.empty() ? "" : " (" + why + ")"));
    }

    void Show(const std::shared_ptr<AVFrame>& frame, VideoPicture& picture) {
        if (!PicturePlanes::Knows(frame->format)) {
            NameFormat(frame->format);
            mInput.Fail(fmt::format("pixels of libav's format {} are not understood; convert them to another",
                                    mFacts.pixelFormat));
        }
        if (!mShown) NoteFirst(*frame);
        mShown = true;
        NoteTags(*frame, picture.tags);
        mPlanes.Take(frame, picture.tags.fullRange.value_or(false), picture);
        picture.time.reset();
        for (const std::int64_t time : {frame->best_effort_timestamp, frame->pts})
            if (time > -kTimeLimit && time < kTimeLimit) picture.time = time;
        picture.order = frame->interlaced_frame == 0  ? FieldOrder::kProgressive
                        : frame->top_field_first != 0 ? FieldOrder::kUpperFirst
                                                      : FieldOrder::kLowerFirst;
        picture.repeatsField = frame->repeat_pict == 1;
        picture.damaged =
            mDamaged || frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        mDamaged = false;
    }

    void NoteTags(const AVFrame& frame, VideoTags& tags) const {
        tags = mFacts.tags;
        const auto take = [](int& into, int told) { into = told != 2 ? told : into; };
        take(tags.matrix, NumberOf(frame.colorspace));
        take(tags.primaries, NumberOf(frame.color_primaries));
        take(tags.transfer, NumberOf(frame.color_trc));
        const int range = NumberOf(frame.color_range);
        const bool full = range == AVCOL_RANGE_JPEG || IsFullRange(frame.format);
        if (full || range == AVCOL_RANGE_MPEG) tags.fullRange = full;
    }

    /// Headers may not know what the pictures turn out to be.
    void NoteFirst(const AVFrame& frame) {
        NameFormat(frame.format);
        mFacts.size = {static_cast<std::uint32_t>(frame.width), static_cast<std::uint32_t>(frame.height)};
        if (!mFacts.aspect && frame.sample_aspect_ratio.num > 0 && frame.sample_aspect_ratio.den > 0)
            mFacts.aspect = AspectOf(frame.sample_aspect_ratio, mDecoder->codec_id);
    }

    static bool IsFullRange(int format) {
        return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
               format == AV_PIX_FMT_YUVJ444P || format == AV_PIX_FMT_YUVJ440P ||
               format == AV_PIX_FMT_YUVJ411P;
    }

    const LibavLog mLog;
    VideoInput mInput;
    VideoFacts mFacts;
    std::unique_ptr<AVCodecContext, LibavFree> mDecoder;
    std::unique_ptr<AVPacket, LibavFree> mPacket;
    PicturePlanes mPlanes;
    std::string mReason;   // of the first error
    bool mDamaged = false; // something was lost since the last picture
    bool mShown = false;   // there was a picture
    bool mEnded = false;
};

} // namespace
} // namespace corvane

/// One of the module's functions; see `Compare/Video.h`.
extern "C" __attribute__((visibility("default"))) corvane::Video*
CorvaneOpenLibavVideo(const std::filesystem::path& path, const std::atomic<bool>* cancel) {
    return new corvane::LibavVideo(path, cancel);
}
