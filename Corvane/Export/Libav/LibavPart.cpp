#include "LibavPart.h"

#include <new>

#include "Export/Files/PartFile.h"

namespace corvane {

LibavPart::LibavPart(const std::filesystem::path& file, const AVCodecContext& encoder, const LibavLog& log)
    : mFile(file), mLog(log) {
    mLog.Clear();
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    // Packets as they are in the file.
    context->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
    const int error =
        WithMemory(avformat_open_input(&context, ("file:" + file.string()).c_str(), nullptr, nullptr));
    if (error < 0) throw PartFailure(file, mLog.Reason(error));
    mContext.reset(context);
    const AVCodecParameters* const found = context->nb_streams == 1 ? context->streams[0]->codecpar : nullptr;
    if (found == nullptr || found->codec_id != encoder.codec_id || found->width != encoder.width ||
        found->height != encoder.height)
        throw PartFailure(file, "it is not the part that was expected");
}

bool LibavPart::Next(AVPacket& packet) {
    const int error = WithMemory(av_read_frame(mContext.get(), &packet));
    if (error == AVERROR_EOF) return false;
    if (error < 0) throw PartFailure(mFile, mLog.Reason(error));
    return true;
}

} // namespace corvane
