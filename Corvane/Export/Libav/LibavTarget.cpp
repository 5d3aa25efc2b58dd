#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/md5.h>
#include <libavutil/mem.h>
#include <libavutil/pixdesc.h>
}

#include <fmt/format.h>

#include "Export/Files/PartFile.h"
#include "Export/Targets/ContentHash.h"
#include "Export/Targets/ExportKinds.h"
#include "LibavEncoder.h"
#include "LibavMuxer.h"
#include "LibavPart.h"
#include "LibavPictures.h"

namespace corvane {
namespace {

struct PicturePacket final : Packet {
    PicturePacket(const LibavEncoder& encoder, const StreamFacts& facts) : picture(encoder, facts) {}

    LibavPicture picture;
    std::vector<std::byte> decoded; // if it is not the picture
};

// FFV1 does not keep the byte beside three colors, and its decoders make 0 of it.
Planes WithoutFourthBytes(const AVFrame& picture, std::vector<std::byte>& decoded) {
    const std::size_t rowBytes = std::size_t{4} * static_cast<std::size_t>(picture.width);
    decoded.clear();
    for (int y = 0; y < picture.height; ++y) {
        const auto* const row =
            reinterpret_cast<const std::byte*>(picture.data[0]) + std::ptrdiff_t{picture.linesize[0]} * y;
        decoded.insert(decoded.end(), row, row + rowBytes);
    }
    for (std::size_t i = 3; i < decoded.size(); i += 4) decoded[i] = std::byte{0};
    return {{decoded.data(), std::ssize(decoded), decoded.size(), 1}};
}

class LibavTarget final : public Target {
  public:
    explicit LibavTarget(const LibavRequest& request)
        : mFacts(request.facts), mContainer(*ContainerFor(request)),
          mEncoder(request, CodecFor(request, mContainer), (mContainer.flags & AVFMT_GLOBALHEADER) != 0,
                   mLog),
          mMuxer(request, mContainer, mLog) {
        mMuxer.Begin(mEncoder.Context(), mFacts);
    }

    std::unique_ptr<Packet> NewPacket() override { return std::make_unique<PicturePacket>(mEncoder, mFacts); }

    void Prepare(const FrameView& frame, std::int64_t, Packet& packet) override {
        static_cast<PicturePacket&>(packet).picture.Paint(frame);
    }

    void Consume(Packet& packet) override {
        AVFrame& picture = static_cast<PicturePacket&>(packet).picture.Get();
        picture.pts = mNext++;
        mEncoder.Encode(&picture, mToMuxer);
    }

    void Complete() override {
        mEncoder.Encode(nullptr, mToMuxer);
        mMuxer.Complete();
    }

    std::vector<std::filesystem::path> WorkingPaths() const override { return {mMuxer.WorkingPath()}; }

    std::string Finish() override { return mMuxer.Finish(); }

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

    // Frames of most of these codecs don't depend on each other, and those of FFV1 on none before a key
    // frame, which comes after the same number of frames each time.
    std::int64_t PartFrames() const override {
        const AVCodecContext& encoder = mEncoder.Context();
        if (av_find_input_format(mContainer.name) == nullptr) return 0; // nobody could read the parts
        if (encoder.codec_id == AV_CODEC_ID_FFV1) return std::max(encoder.gop_size, 1);
        return (avcodec_descriptor_get(encoder.codec_id)->props & AV_CODEC_PROP_INTRA_ONLY) != 0 ? 1 : 0;
    }

    bool Append(const std::filesystem::path& part, std::int64_t frames,
                const std::atomic<bool>& cancel) override {
        LibavPart packets(part, mEncoder.Context(), mLog);
        const std::unique_ptr<AVPacket, LibavFree> packet(av_packet_alloc());
        if (!packet) throw std::bad_alloc();
        std::int64_t found = 0;
        for (; !cancel && packets.Next(*packet); ++found) {
            packet->pts = packet->dts = mNext++;
            packet->duration = 1;
            mMuxer.Write(*packet);
        }
        if (!cancel && found != frames)
            throw PartFailure(part, fmt::format("it holds {} frames and not {}", found, frames));
        return !cancel;
    }

    Planes PlanesOf(const FrameView&, Packet& packet) const override {
        auto& made = static_cast<PicturePacket&>(packet);
        const AVFrame& picture = made.picture.Get();
        if (picture.format == AV_PIX_FMT_BGR0 && mEncoder.Context().codec_id == AV_CODEC_ID_FFV1)
            return WithoutFourthBytes(picture, made.decoded);
        return PlanesOfPicture(picture);
    }

    std::string PixelsName() const override { return av_get_pix_fmt_name(mEncoder.Context().pix_fmt); }

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
    const corvane::ExportKind* const kind = corvane::FindExportKind(request.kind);
    if (kind != nullptr && kind->IsPicture()) return corvane::MakeLibavPictures(request).release();
    return new corvane::LibavTarget(request);
}

/// Another one; see `ContentHash.h`.
extern "C" __attribute__((visibility("default"))) void
CorvaneHashContent(const corvane::ContentSource& source, corvane::ContentHash& hash) {
    const std::unique_ptr<AVMD5, void (*)(void*)> state(av_md5_alloc(), av_free);
    if (!state) throw std::bad_alloc();
    av_md5_init(state.get());
    for (auto piece = source(); !piece.empty(); piece = source())
        av_md5_update(state.get(), reinterpret_cast<const std::uint8_t*>(piece.data()), piece.size());
    av_md5_final(state.get(), reinterpret_cast<std::uint8_t*>(hash.data()));
}
