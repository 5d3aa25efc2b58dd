#include "LibavPictures.h"

#include <mutex>
#include <vector>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Export/Files/PictureFiles.h"
#include "LibavEncoder.h"

namespace corvane {
namespace {

// The default codec of the kind, or the same one with options.
CodecChoice PictureCodecFor(const LibavRequest& request) {
    CodecChoice usual = ParseCodec(request.kind);
    if (request.codec.empty()) return usual;
    CodecChoice choice = ParseCodec(request.codec);
    if (choice.codec->id != usual.codec->id)
        throw UsageFailure(
            fmt::format("{}: {} pictures have no other codec; leave out {}, or write {}:option=value",
                        request.output.string(), request.kind, choice.codec->name, request.kind));
    return choice;
}

// A picture in the making, and an encoder of its own.
struct FilePacket final : Packet {
    FilePacket(const LibavRequest& request, const CodecChoice& choice, const LibavLog& log)
        : encoder(request, choice, false, log), picture(encoder, request.facts) {}

    LibavEncoder encoder;
    LibavPicture picture;
    std::vector<std::byte> file;
    std::int64_t index = 0;
};

class LibavPictures final : public Target {
  public:
    explicit LibavPictures(const LibavRequest& request)
        : mRequest(request), mChoice(PictureCodecFor(request)), mFiles(request.output) {
        // All threads are busy with pictures of their own.
        mChoice.options.try_emplace("threads", "1");
        mFirst = std::make_unique<FilePacket>(mRequest, mChoice, mLog);
        mPixels = mFirst->encoder.Context().pix_fmt;
    }

    std::unique_ptr<Packet> NewPacket() override {
        const std::lock_guard lock(mMutex);
        if (mFirst) return std::move(mFirst);
        return std::make_unique<FilePacket>(mRequest, mChoice, mLog);
    }

    void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) override {
        auto& made = static_cast<FilePacket&>(packet);
        made.picture.Paint(frame);
        made.index = made.picture.Get().pts = index;
        made.file.clear();
        made.encoder.Encode(&made.picture.Get(), [&made](const AVPacket& encoded) {
            const auto* const bytes = reinterpret_cast<const std::byte*>(encoded.data);
            made.file.insert(made.file.end(), bytes, bytes + encoded.size);
        });
    }

    void Consume(Packet& packet) override {
        const auto& made = static_cast<FilePacket&>(packet);
        mFiles.Write(made.index, made.file);
    }

    std::vector<std::filesystem::path> WorkingPaths() const override { return mFiles.WorkingPaths(); }
    std::string Finish() override { return mFiles.Commit(); }
    bool KeepsAlpha() const override { return HasAlpha(mPixels); }
    std::uint64_t BytesWritten() const override { return mFiles.BytesWritten(); }
    std::int64_t PartFrames() const override { return mFiles.IsSeries() ? 1 : 0; }

    Planes PlanesOf(const FrameView&, Packet& packet) const override {
        // Half floats are not what was painted.
        const auto format = mChoice.options.find("format");
        if (format != mChoice.options.end() && format->second != "float") return {};
        return PlanesOfPicture(static_cast<FilePacket&>(packet).picture.Get());
    }
    std::string PixelsName() const override { return av_get_pix_fmt_name(mPixels); }

  private:
    const LibavLog mLog;
    const LibavRequest mRequest;
    CodecChoice mChoice;
    PictureFiles mFiles;
    std::mutex mMutex;                  // of the next one
    std::unique_ptr<FilePacket> mFirst; // shows at once whether there can be any
    AVPixelFormat mPixels;
};

} // namespace

std::unique_ptr<Target> MakeLibavPictures(const LibavRequest& request) {
    return std::make_unique<LibavPictures>(request);
}

} // namespace corvane
