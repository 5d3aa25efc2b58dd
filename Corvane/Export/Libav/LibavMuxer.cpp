#include "LibavMuxer.h"

#include <cerrno>
#include <new>
#include <span>

#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

namespace corvane {
namespace {

constexpr int kBufferSize = 1 << 20;

// Muxers leave out what they find no memory for, be it the places of the frames, and say nothing. The C
// library does.
template <class Call>
int NoticingLackOfMemory(const Call& call) {
    errno = 0;
    const int result = call();
    return errno == ENOMEM ? AVERROR(ENOMEM) : result;
}

} // namespace

LibavMuxer::LibavMuxer(const LibavRequest& request, const AVOutputFormat& container, const LibavLog& log)
    : mFile(request.output), mLog(log) {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    AVIOContext* const io = buffer ? avio_alloc_context(buffer, kBufferSize, 1, this, nullptr, WriteBytes,
                                                        mFile.IsRegular() ? Seek : nullptr)
                                   : nullptr;
    const int error = avformat_alloc_output_context2(&mContext, &container, nullptr, nullptr);
    if (io == nullptr || error < 0) throw std::bad_alloc();
    mContext->pb = io;
    // Equal exports have equal bytes: no date and no random number.
    mContext->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    // The file is read again to move MP4's index to the front.
    mContext->opaque = this;
    mContext->io_open = OpenToRead;
    mContext->io_close2 = CloseToRead;
    if (!mFile.IsRegular()) io->seekable = 0;
}

LibavMuxer::~LibavMuxer() {
    if (mContext == nullptr) return;
    if (mContext->pb != nullptr) av_freep(&mContext->pb->buffer);
    avio_context_free(&mContext->pb);
    avformat_free_context(mContext);
}

template <class Step>
std::int64_t LibavMuxer::Keeping(const Step& step) {
    try {
        return step();
    } catch (...) {
        if (!mWriteError) mWriteError = std::current_exception();
        return AVERROR(EIO);
    }
}

std::int64_t LibavMuxer::Size() const {
    struct stat status {};
    if (fstat(mFile.Fd(), &status) != 0) mFile.Fail(errno);
    return status.st_size;
}

int LibavMuxer::WriteBytes(void* self, std::uint8_t* bytes, int size) {
    auto& muxer = *static_cast<LibavMuxer*>(self);
    return static_cast<int>(muxer.Keeping([&] {
        muxer.mFile.Write(std::as_bytes(std::span(bytes, static_cast<std::size_t>(size))));
        return size;
    }));
}

std::int64_t LibavMuxer::Seek(void* self, std::int64_t offset, int whence) {
    auto& muxer = *static_cast<LibavMuxer*>(self);
    return muxer.Keeping([&] {
        if ((whence & AVSEEK_SIZE) != 0) return muxer.Size();
        const off_t place = lseek(muxer.mFile.Fd(), offset, whence & 3);
        if (place < 0) muxer.mFile.Fail(errno);
        return place;
    });
}

int LibavMuxer::OpenToRead(AVFormatContext* context, AVIOContext** io, const char*, int flags,
                           AVDictionary**) {
    auto& muxer = *static_cast<LibavMuxer*>(context->opaque);
    if ((flags & AVIO_FLAG_WRITE) != 0 || !muxer.mFile.IsRegular()) return AVERROR(ENOSYS);
    muxer.mReadPlace = 0;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    *io =
        buffer ? avio_alloc_context(buffer, kBufferSize, 0, &muxer, ReadBytes, nullptr, SeekToRead) : nullptr;
    return *io != nullptr ? 0 : AVERROR(ENOMEM);
}

int LibavMuxer::CloseToRead(AVFormatContext*, AVIOContext* io) {
    if (io != nullptr) av_freep(&io->buffer);
    avio_context_free(&io);
    return 0;
}

int LibavMuxer::ReadBytes(void* self, std::uint8_t* bytes, int size) {
    auto& muxer = *static_cast<LibavMuxer*>(self);
    return static_cast<int>(muxer.Keeping([&]() -> std::int64_t {
        const ssize_t count =
            pread(muxer.mFile.Fd(), bytes, static_cast<std::size_t>(size), muxer.mReadPlace);
        if (count < 0) muxer.mFile.Fail(errno);
        muxer.mReadPlace += count;
        return count > 0 ? count : AVERROR_EOF;
    }));
}

std::int64_t LibavMuxer::SeekToRead(void* self, std::int64_t offset, int whence) {
    auto& muxer = *static_cast<LibavMuxer*>(self);
    if ((whence & AVSEEK_SIZE) != 0) return muxer.Keeping([&] { return muxer.Size(); });
    if ((whence & 3) != SEEK_SET) return AVERROR(EINVAL);
    return muxer.mReadPlace = offset;
}

void LibavMuxer::Begin(const AVCodecContext& encoder, const StreamFacts& facts) {
    mTimeBase = encoder.time_base;
    mStream = avformat_new_stream(mContext, nullptr);
    if (mStream == nullptr || avcodec_parameters_from_context(mStream->codecpar, &encoder) < 0)
        throw std::bad_alloc();
    // Many players of MOV and MP4 know HEVC by this name alone.
    if (encoder.codec_id == AV_CODEC_ID_HEVC && IsQuickTimeFamily(*mContext->oformat))
        mStream->codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
    mStream->time_base = encoder.time_base;
    mStream->avg_frame_rate = encoder.framerate;
    mStream->duration = facts.frames;
    mStream->sample_aspect_ratio = encoder.sample_aspect_ratio;
    WriteHeader();
}

void LibavMuxer::WriteHeader() {
    LibavOptions options;
    if (IsQuickTimeFamily(*mContext->oformat)) {
        const bool index = mFile.IsRegular() && std::string_view(mContext->oformat->name) != "mov";
        // Without seeking, no index can be written afterwards: the file is made of fragments then.
        const char* const flags = !mFile.IsRegular()
                                      ? "+frag_keyframe+empty_moov+default_base_moof+write_colr"
                                  : index ? "+faststart+write_colr"
                                          : "+write_colr";
        options.Set("movflags", flags);
    }
    Check(NoticingLackOfMemory([&] { return avformat_write_header(mContext, options.Get()); }));
}

void LibavMuxer::Write(AVPacket& packet) {
    packet.stream_index = mStream->index;
    if (packet.duration == 0) packet.duration = 1;
    av_packet_rescale_ts(&packet, mTimeBase, mStream->time_base);
    Check(av_interleaved_write_frame(mContext, &packet));
}

void LibavMuxer::Complete() {
    Check(NoticingLackOfMemory([&] { return av_write_trailer(mContext); }));
    avio_flush(mContext->pb);
    Check(mContext->pb->error);
}

void LibavMuxer::Check(int error) {
    if (mWriteError) std::rethrow_exception(mWriteError);
    if (WithMemory(error) < 0)
        throw Failure(
            fmt::format("{}: the container {} can't be written: {}; choose another codec or container",
                        mFile.Name(), mContext->oformat->name, mLog.Reason(error)));
}

} // namespace corvane
