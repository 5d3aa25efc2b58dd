#include "VideoInput.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <new>
#include <span>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Foundation/FileError.h"
#include "Services/Foundation/RegularFile.h"

namespace corvane {
namespace {

constexpr std::uint64_t kLargestPicture = std::uint64_t{1} << 31; // bytes of a file of a sequence
constexpr char kRemedy[] = "choose a video file, numbered pictures such as out.%05d.png, or - for a pipe";

std::optional<FieldOrder> OrderOf(AVFieldOrder order) {
    switch (order) {
    case AV_FIELD_PROGRESSIVE: return FieldOrder::kProgressive;
    // Whatever libav's documentation says of the second letter, those who write files mean the first.
    case AV_FIELD_TT:
    case AV_FIELD_TB: return FieldOrder::kUpperFirst;
    case AV_FIELD_BB:
    case AV_FIELD_BT: return FieldOrder::kLowerFirst;
    case AV_FIELD_UNKNOWN: break;
    }
    return std::nullopt;
}

Rate RateOf(AVRational rate) {
    if (rate.num <= 0 || rate.den <= 0) return {};
    return {static_cast<std::uint32_t>(rate.num), static_cast<std::uint32_t>(rate.den)};
}

/// The file's path. Throws what the system says if it can't be read: what libav's readers return as numbers
/// of the system's errors need not be any.
std::string Readable(std::string file) {
    if (!FileDescriptor(file, O_RDONLY | O_NONBLOCK)) throw FileError::OfReading(errno);
    return file;
}

bool IsPipe(const std::filesystem::path& path) {
    std::error_code error;
    return path == "-" || std::filesystem::is_fifo(path, error);
}

} // namespace

PixelAspect AspectOf(AVRational told, AVCodecID codec) {
    if (codec == AV_CODEC_ID_PNG || codec == AV_CODEC_ID_APNG) std::swap(told.num, told.den);
    return {static_cast<std::uint32_t>(told.num), static_cast<std::uint32_t>(told.den)};
}

VideoInput::VideoInput(const std::filesystem::path& path, const std::atomic<bool>* cancel,
                       const LibavLog& log)
    : mName(path == "-" ? "standard input" : path.string()), mCancel(cancel), mLog(log) {
    // Told that it is a file, libav takes no colon in its name for a protocol.
    try {
        if (IsPipe(path))
            OpenPipe(path);
        else
            Open("file:" + Readable(FindFile(path)));
    } catch (const FileError& error) {
        Fail(fmt::format("{}; {}", error.what(),
                         error.GetRemedy().empty() ? kRemedy : error.GetRemedy().c_str()));
    }
    FindStream();
}

void VideoInput::Fail(const std::string& reason) const {
    throw Failure(fmt::format("{}: {}", mName, reason));
}

/// The file that is to be opened: the first one of a sequence.
std::string VideoInput::FindFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    if (type == std::filesystem::file_type::directory) throw FileError::OfReading(EISDIR);
    if (type != std::filesystem::file_type::not_found) return path.string();
    const auto name = NumberedName::Parse(path);
    if (!name) throw FileError::OfReading(ENOENT);
    mSequence = std::make_unique<Sequence>(Sequence{*name, name->Existing()});
    if (mSequence->numbers.empty()) Fail(fmt::format("there is no file with such a name; {}", kRemedy));
    return name->For(mSequence->numbers.front()).string();
}

void VideoInput::OpenPipe(const std::filesystem::path& path) {
    // Opening a named pipe otherwise waits for who writes, whatever becomes of `mCancel`.
    mPipe = path == "-" ? FileDescriptor(::dup(STDIN_FILENO)) : FileDescriptor(path, O_RDONLY | O_NONBLOCK);
    if (!mPipe) throw FileError::OfReading(errno);
    constexpr int kBuffer = 1 << 16;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBuffer));
    if (buffer == nullptr) throw std::bad_alloc();
    mPipeIO.reset(avio_alloc_context(buffer, kBuffer, 0, this, ReadPipe, nullptr, nullptr));
    if (!mPipeIO) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    Open("");
}

int VideoInput::ReadPipe(void* self, std::uint8_t* bytes, int size) {
    const auto& input = *static_cast<const VideoInput*>(self);
    constexpr int kWaitMilliseconds = 50;
    pollfd ready{input.mPipe.Get(), POLLIN, 0};
    while (!input.IsStopped()) {
        const int count = ::poll(&ready, 1, kWaitMilliseconds);
        if (count == 0 || (count < 0 && errno == EINTR)) continue;
        const ssize_t got = ::read(input.mPipe.Get(), bytes, static_cast<std::size_t>(size));
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        return got > 0 ? static_cast<int>(got) : got == 0 ? AVERROR_EOF : AVERROR(errno);
    }
    return AVERROR_EOF;
}

void VideoInput::Open(const std::string& url) {
    LibavOptions options;
    // What a playlist names is not fetched.
    options.Set("protocol_whitelist", "file,pipe");
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    context->pb = mPipeIO.get();
    context->interrupt_callback = {AskStopped, this};
    const int result = WithMemory(avformat_open_input(&context, url.c_str(), nullptr, options.Get()));
    mContext.reset(context);
    if (result < 0 && IsStopped()) Fail("it was cancelled before there was a picture");
    if (result < 0)
        Fail(fmt::format("this is no video that libav knows, or not all of it ({}); {}", mLog.Reason(result),
                         kRemedy));
    WithMemory(avformat_find_stream_info(context, nullptr));
}

void VideoInput::FindStream() {
    const std::span streams(mContext->streams, mContext->nb_streams);
    for (AVStream* const stream : streams) stream->discard = AVDISCARD_ALL;
    const int index = av_find_best_stream(mContext.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    // The cover of a song is a picture, but no video.
    if (index < 0 || (streams[std::size_t(index)]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0)
        Fail(fmt::format("there is no video in it{}; {}", streams.empty() ? "" : ", only something else",
                         kRemedy));
    mStream = streams[std::size_t(index)];
    mStream->discard = AVDISCARD_DEFAULT;
}

VideoFacts VideoInput::Facts() const {
    const AVCodecParameters& codec = *mStream->codecpar;
    VideoFacts facts;
    facts.name = mName;
    facts.container = mContext->iformat->name;
    facts.codec = avcodec_get_name(codec.codec_id);
    facts.size = {static_cast<std::uint32_t>(codec.width), static_cast<std::uint32_t>(codec.height)};
    const AVRational aspect = av_guess_sample_aspect_ratio(mContext.get(), mStream, nullptr);
    if (aspect.num > 0 && aspect.den > 0) facts.aspect = AspectOf(aspect, codec.codec_id);
    facts.order = OrderOf(codec.field_order);
    facts.tags = {NumberOf(codec.color_space), NumberOf(codec.color_primaries), NumberOf(codec.color_trc),
                  std::nullopt};
    if (const int range = NumberOf(codec.color_range); range != AVCOL_RANGE_UNSPECIFIED)
        facts.tags.fullRange = range == AVCOL_RANGE_JPEG;
    if (mSequence) {
        facts.container = "image2";
        facts.pictures = std::ssize(mSequence->numbers);
        return facts;
    }
    facts.nominalRate = RateOf(av_guess_frame_rate(mContext.get(), mStream, nullptr));
    facts.averageRate = RateOf(mStream->avg_frame_rate);
    facts.timeBase = RateOf(mStream->time_base);
    if (mStream->duration > 0)
        facts.duration = mStream->duration;
    else if (mContext->duration > 0)
        facts.duration = av_rescale_q(mContext->duration, AV_TIME_BASE_Q, mStream->time_base);
    if (mStream->nb_frames > 0) facts.pictures = mStream->nb_frames;
    return facts;
}

bool VideoInput::Next(AVPacket& packet) {
    if (mSequence) return NextOfSequence(packet);
    for (;;) {
        const int result = WithMemory(av_read_frame(mContext.get(), &packet));
        if (result == AVERROR(EAGAIN)) continue;
        if (result < 0) {
            if (result != AVERROR_EOF && !IsStopped()) mWhyCut = LibavMessage(result);
            return false;
        }
        if (packet.stream_index == mStream->index) break;
        av_packet_unref(&packet);
    }
    if (av_packet_get_side_data(&packet, AV_PKT_DATA_ENCRYPTION_INFO, nullptr) != nullptr)
        Fail("it is encrypted; decrypt it first");
    return true;
}

bool VideoInput::SeekBefore(std::int64_t time) {
    if (!mSequence)
        return WithMemory(av_seek_frame(mContext.get(), mStream->index, time, AVSEEK_FLAG_BACKWARD)) >= 0;
    const auto found = std::ranges::lower_bound(mSequence->numbers, time);
    mSequence->next = static_cast<std::size_t>(found - mSequence->numbers.begin());
    return true;
}

bool VideoInput::NextOfSequence(AVPacket& packet) {
    if (mSequence->next == mSequence->numbers.size()) return false;
    const std::int64_t number = mSequence->numbers[mSequence->next++];
    const std::filesystem::path path = mSequence->name.For(number);
    try {
        RegularFile file(path, kLargestPicture - 1);
        if (av_new_packet(&packet, static_cast<int>(file.Size())) < 0) throw std::bad_alloc();
        file.Read(std::as_writable_bytes(std::span(packet.data, file.Size())));
    } catch (const FileError& error) {
        throw Failure(fmt::format("{}: {}", path.string(), error.what()));
    }
    packet.pts = packet.dts = number;
    packet.flags |= AV_PKT_FLAG_KEY;
    return true;
}

} // namespace corvane
