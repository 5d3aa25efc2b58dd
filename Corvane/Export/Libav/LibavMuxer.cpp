#include "LibavMuxer.h"

#include <cerrno>
#include <new>

#include <unistd.h>

#include <fmt/format.h>

namespace corvane {
namespace {

constexpr int kBufferSize = 1 << 20;

// Matroska gives the aspect as a size in whole pixels. If that is not exact, readers are to take the codec's
// own ratio.
bool CanTellAspect(const AVOutputFormat& container, const AVCodecContext& encoder) {
    const bool matroska =
        std::string_view(container.name) == "matroska" || std::string_view(container.name) == "webm";
    const bool codecTells = encoder.codec_id == AV_CODEC_ID_H264 || encoder.codec_id == AV_CODEC_ID_HEVC ||
                            encoder.codec_id == AV_CODEC_ID_FFV1;
    const AVRational aspect = encoder.sample_aspect_ratio;
    return !matroska || !codecTells || std::int64_t{encoder.width} * aspect.num % aspect.den == 0;
}

bool IsQuickTimeFamily(const AVOutputFormat& container) {
    const std::string_view name = container.name;
    return name == "mp4" || name == "mov" || name == "ipod" || name == "3gp";
}

} // namespace

LibavMuxer::LibavMuxer(const LibavRequest& request, const AVOutputFormat& container, const LibavLog& log)
    : mFile(request.output), mLog(log) {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    AVIOContext* const io = buffer ? avio_alloc_context(buffer, kBufferSize, 1, this, nullptr, WriteBytes,
                                                        mFile.IsRegular() ? Seek : nullptr)
                                   : nullptr;
    // The name is for moving MP4's index to the front, for which libav reads the file again.
    const int error =
        avformat_alloc_output_context2(&mContext, &container, nullptr, mFile.WorkingPath().c_str());
    if (io == nullptr || error < 0) throw std::bad_alloc();
    mContext->pb = io;
    mContext->flags |= AVFMT_FLAG_CUSTOM_IO;
    if (!mFile.IsRegular()) io->seekable = 0;
}

LibavMuxer::~LibavMuxer() {
    if (mContext == nullptr) return;
    if (mContext->pb != nullptr) av_freep(&mContext->pb->buffer);
    avio_context_free(&mContext->pb);
    avformat_free_context(mContext);
}

int LibavMuxer::WriteBytes(void* self, std::uint8_t* bytes, int size) {
    auto& muxer = *static_cast<LibavMuxer*>(self);
    try {
        muxer.mFile.Write({reinterpret_cast<const std::byte*>(bytes), static_cast<std::size_t>(size)});
        return size;
    } catch (...) {
        if (!muxer.mWriteError) muxer.mWriteError = std::current_exception();
        return AVERROR(EIO);
    }
}

std::int64_t LibavMuxer::Seek(void* self, std::int64_t offset, int whence) {
    const int fd = static_cast<LibavMuxer*>(self)->mFile.Fd();
    if ((whence & AVSEEK_SIZE) == 0) return lseek(fd, offset, whence & 3);
    const off_t here = lseek(fd, 0, SEEK_CUR);
    const off_t size = lseek(fd, 0, SEEK_END);
    lseek(fd, here, SEEK_SET);
    return size;
}

void LibavMuxer::Begin(const AVCodecContext& encoder, const StreamFacts& facts) {
    mTimeBase = encoder.time_base;
    mStream = avformat_new_stream(mContext, nullptr);
    if (mStream == nullptr || avcodec_parameters_from_context(mStream->codecpar, &encoder) < 0)
        throw std::bad_alloc();
    mStream->time_base = encoder.time_base;
    mStream->avg_frame_rate = encoder.framerate;
    mStream->duration = facts.frames;
    if (CanTellAspect(*mContext->oformat, encoder))
        mStream->sample_aspect_ratio = encoder.sample_aspect_ratio;
    WriteHeader();
}

void LibavMuxer::WriteHeader() {
    AVDictionary* options = nullptr;
    if (IsQuickTimeFamily(*mContext->oformat)) {
        const bool index = mFile.IsRegular() && std::string_view(mContext->oformat->name) != "mov";
        // Without seeking, no index can be written afterwards: the file is made of fragments then.
        const char* const flags = !mFile.IsRegular()
                                      ? "+frag_keyframe+empty_moov+default_base_moof+write_colr"
                                  : index ? "+faststart+write_colr"
                                          : "+write_colr";
        av_dict_set(&options, "movflags", flags, 0);
    }
    const int error = avformat_write_header(mContext, &options);
    av_dict_free(&options);
    Check(error);
}

void LibavMuxer::Write(AVPacket& packet) {
    packet.stream_index = mStream->index;
    if (packet.duration == 0) packet.duration = 1;
    av_packet_rescale_ts(&packet, mTimeBase, mStream->time_base);
    Check(av_interleaved_write_frame(mContext, &packet));
}

void LibavMuxer::Finish() {
    Check(av_write_trailer(mContext));
    avio_flush(mContext->pb);
    Check(mContext->pb->error);
    mFile.Commit();
}

void LibavMuxer::Check(int error) {
    if (mWriteError) std::rethrow_exception(mWriteError);
    if (error < 0)
        throw Failure(
            fmt::format("{}: the container {} can't be written: {}; choose another codec or container",
                        mFile.Name(), mContext->oformat->name, mLog.Reason(error)));
}

} // namespace corvane
