#include <algorithm>

#include "LibavEncoder.h"
#include "LibavMuxer.h"

namespace corvane {
namespace {

struct PicturePacket final : Packet {
    PicturePacket(const PixelLayout& layout, const StreamFacts& facts)
        : painter(layout, facts), picture(av_frame_alloc()) {
        if (!picture) throw std::bad_alloc();
    }

    LibavPainter painter;
    std::unique_ptr<AVFrame, LibavFree> picture;
    PaintedRows painted;
};

class LibavTarget final : public Target {
  public:
    explicit LibavTarget(const LibavRequest& request)
        : mFacts(request.facts), mContainer(*ContainerFor(request)),
          mEncoder(request, CodecFor(request, mContainer), (mContainer.flags & AVFMT_GLOBALHEADER) != 0,
                   mLog),
          mMuxer(request, mContainer, mLog) {
        mMuxer.Begin(mEncoder.Context(), mFacts);
    }

    std::unique_ptr<Packet> NewPacket() override {
        return std::make_unique<PicturePacket>(mEncoder.Layout(), mFacts);
    }

    void Prepare(const FrameView& frame, std::int64_t, Packet& packet) override {
        auto& made = static_cast<PicturePacket&>(packet);
        // An encoder may still hold the last picture's memory.
        if (av_frame_is_writable(made.picture.get()) == 0) {
            made.painted = {};
            mEncoder.NewPicture(*made.picture);
        }
        made.painter.Paint(frame, *made.picture, made.painted);
    }

    void Consume(Packet& packet) override {
        AVFrame& picture = *static_cast<PicturePacket&>(packet).picture;
        picture.pts = mNext++;
        mEncoder.Encode(&picture, mToMuxer);
    }

    std::string Finish() override {
        mEncoder.Encode(nullptr, mToMuxer);
        return mMuxer.Finish();
    }

    bool KeepsAlpha() const override { return HasAlpha(mEncoder.Context().pix_fmt); }

    // An encoder with threads of its own takes far longer than the conversion of bytes: one thread feeds it
    // while another makes the next frame. Float frames are more work.
    unsigned UsefulJobs(unsigned jobs) const override {
        constexpr int kThreads =
            AV_CODEC_CAP_FRAME_THREADS | AV_CODEC_CAP_SLICE_THREADS | AV_CODEC_CAP_OTHER_THREADS;
        const bool threaded = (mEncoder.Context().codec->capabilities & kThreads) != 0;
        return threaded && !mFacts.IsFloat() ? std::min(jobs, 2u) : jobs;
    }

    std::uint64_t BytesWritten() const override { return mMuxer.BytesWritten(); }

  private:
    const LibavLog mLog;
    const StreamFacts mFacts;
    const AVOutputFormat& mContainer;
    LibavEncoder mEncoder;
    LibavMuxer mMuxer;
    const LibavEncoder::Sink mToMuxer = [this](AVPacket& packet) { mMuxer.Write(packet); };
    std::int64_t mNext = 0;
};

} // namespace
} // namespace corvane

/// One of the module's functions; see `LibavLoader.h`.
extern "C" __attribute__((visibility("default"))) corvane::Target*
CorvaneMakeLibavTarget(const corvane::LibavRequest& request) {
    return new corvane::LibavTarget(request);
}
