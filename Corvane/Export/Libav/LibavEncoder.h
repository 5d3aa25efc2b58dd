#pragma once

#include <functional>
#include <memory>

#include "LibavCodecs.h"
#include "LibavError.h"
#include "LibavPixels.h"

namespace corvane {

struct LibavFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVBufferPool* pool) const { av_buffer_pool_uninit(&pool); }
};

/// An open encoder. `NewPicture` is for many threads, the rest for one at a time. Throws `Failure` and, for
/// options that the encoder does not have, `UsageFailure`.
class LibavEncoder {
  public:
    LibavEncoder(const LibavRequest& request, CodecChoice choice, bool globalHeader, const LibavLog& log);

    const AVCodecContext& Context() const { return *mContext; }
    const PixelLayout& Layout() const { return mLayout; }

    /// Gives `picture` planes of its own and everything but the pixels and the time.
    void NewPicture(AVFrame& picture) const;
    using Sink = std::function<void(AVPacket&)>;
    /// Encodes a picture, or with null what the encoder still holds; hands the packets that are ready to
    /// `sink`.
    void Encode(const AVFrame* picture, const Sink& sink);

  private:
    void Describe(const StreamFacts& facts);
    void Open(CodecChoice& choice);
    [[noreturn]] void FailToOpen(int error) const;

    const StreamFacts mFacts;
    const std::string mName; // of the output, for messages
    const AVCodec& mCodec;
    const LibavLog& mLog;
    std::unique_ptr<AVCodecContext, LibavFree> mContext;
    PixelLayout mLayout;
    std::unique_ptr<AVBufferPool, LibavFree> mPool;
    std::unique_ptr<AVPacket, LibavFree> mPacket;
};

} // namespace corvane
