#pragma once

#include <functional>
#include <memory>

#include "LibavCodecs.h"
#include "LibavError.h"
#include "LibavFree.h"
#include "LibavPixels.h"

namespace corvane {

/// An open encoder. `NewPicture` may be called from many threads at once, all else by one at a time. All of
/// it throws `Failure`.
class LibavEncoder {
  public:
    /// Opens the encoder. `globalHeader`: the container wants its header once and not in every key frame.
    /// `log` outlives the encoder. Throws `UsageFailure` for options that the encoder does not have.
    LibavEncoder(const LibavRequest& request, CodecChoice choice, bool globalHeader, const LibavLog& log);
    ~LibavEncoder();

    /// The encoder's own state, with all that containers must be told.
    const AVCodecContext& Context() const { return *mContext; }
    /// How its pictures are to be filled.
    const PixelLayout& Layout() const { return mLayout; }

    /// Gives `picture` planes of its own and everything but the pixels and the time.
    void NewPicture(AVFrame& picture) const;
    /// Gets each packet, which is its own only during the call.
    using Sink = std::function<void(AVPacket&)>;
    /// Encodes a picture, or if it is null what the encoder still holds. Hands the packets that are ready to
    /// `sink`.
    void Encode(const AVFrame* picture, const Sink& sink);

  private:
    void Open(CodecChoice& choice);
    int TryToOpen(AVPixelFormat format, const CodecChoice& choice);
    void Describe(const StreamFacts& facts);
    [[noreturn]] void FailToOpen(int error) const;
    [[noreturn]] void FailForThreads(unsigned count) const;

    const StreamFacts mFacts;
    const std::string mName; // of the output, for messages
    const AVCodec& mCodec;
    const bool mGlobalHeader;
    const LibavLog& mLog;
    std::unique_ptr<AVCodecContext, LibavFree> mContext;
    PixelLayout mLayout;
    std::unique_ptr<AVBufferPool, LibavFree> mPool;
    std::unique_ptr<AVPacket, LibavFree> mPacket;
    bool mEnded = false; // no more pictures will come
};

/// What one frame after the other is painted into for an encoder. One thread at a time.
class LibavPicture {
  public:
    /// `encoder` outlives it; `facts` say what frames will come. Throws `Failure` as `LibavPainter` does.
    LibavPicture(const LibavEncoder& encoder, const StreamFacts& facts);

    /// Paints a frame, into new memory if the encoder still holds the last picture's. Throws `Failure`.
    void Paint(const FrameView& frame);
    /// The picture that was painted last.
    AVFrame& Get() const { return *mPicture; }

  private:
    const LibavEncoder& mEncoder;
    LibavPainter mPainter;
    const std::unique_ptr<AVFrame, LibavFree> mPicture;
    PaintedRows mPainted;
};

} // namespace corvane
