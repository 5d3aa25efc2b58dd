#include "RawTarget.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "Export/Files/OutputFile.h"
#include "Export/Files/PartFile.h"
#include "Export/Picture/PackedReader.h"

namespace corvane {
namespace {

PackedFormat RawFormatFor(const StreamFacts& facts) {
    PackedFormat format;
    if (facts.IsFloat())
        format.bits = 16;
    else
        format = {{2, 1, 0, 3}, 4, 8, false};
    return format;
}

// Whether the delivered bytes are already what is to be written.
bool IsAsDelivered(const StreamFacts& facts) {
    constexpr RK_PixelFormat kOther = kRK_Float | kRK_YCbCr | kRK_AlphaFirst | kRK_Premultiplied;
    return (facts.raster & kOther) == 0;
}

struct RawPacket final : Packet {
    FrameView frame;                    // rows to write, of `rowBytes` used bytes each
    std::optional<PackedReader> reader; // none if the frame's own rows are written
    std::vector<std::byte> converted;
};

class RawTarget final : public Target {
  public:
    RawTarget(const std::filesystem::path& path, bool native, const StreamFacts& facts)
        : mFacts(facts), mFormat(RawFormatFor(facts)), mAsDelivered(native || IsAsDelivered(facts)),
          mRowBytes(std::size_t{facts.size.width} *
                    (mAsDelivered ? BytesPerPixel(facts.raster) : mFormat.PixelBytes())),
          mFile(path) {
        mFile.Reserve(FileBytes(facts.frames));
    }

    std::unique_ptr<Packet> NewPacket() override {
        auto packet = std::make_unique<RawPacket>();
        if (mAsDelivered) return packet;
        packet->reader.emplace(mFacts, mFormat);
        packet->converted.resize(mRowBytes * mFacts.size.height);
        return packet;
    }

    void Prepare(const FrameView& frame, std::int64_t, Packet& packet) override {
        auto& raw = static_cast<RawPacket&>(packet);
        raw.frame = frame;
        if (mAsDelivered) return;
        raw.reader->Begin(frame);
        for (std::uint32_t y = 0; y < frame.height; ++y)
            raw.reader->Read(y, frame.width, raw.converted.data() + mRowBytes * y);
    }

    void Consume(Packet& packet) override {
        const auto& raw = static_cast<RawPacket&>(packet);
        if (!mAsDelivered)
            mFile.Write(raw.converted);
        else if (raw.frame.rowBytes == static_cast<std::int64_t>(mRowBytes))
            mFile.Write({raw.frame.pixels, mRowBytes * mFacts.size.height});
        else
            for (std::uint32_t y = 0; y < mFacts.size.height; ++y)
                mFile.Write({raw.frame.At(0, y), mRowBytes});
    }

    std::vector<std::filesystem::path> WorkingPaths() const override { return {mFile.WorkingPath()}; }
    std::string Finish() override { return mFile.Commit(); }
    bool KeepsFrames() const override { return mAsDelivered; }
    // A frame in the cache of the thread that made it is written sooner than a second thread makes another;
    // only a pipe keeps the one thread waiting.
    unsigned UsefulJobs(unsigned jobs) const override {
        return !mAsDelivered ? jobs : mFile.IsPipe() ? std::min(jobs, 2u) : 1;
    }
    std::uint64_t BytesWritten() const override { return mFile.BytesWritten(); }

    std::int64_t PartFrames() const override { return 1; }
    bool Append(const std::filesystem::path& part, std::int64_t frames,
                const std::atomic<bool>& cancel) override {
        return AppendPart(part, {}, FileBytes(frames), mFile, cancel);
    }

    Planes PlanesOf(const FrameView&, Packet& packet) const override {
        const auto& raw = static_cast<RawPacket&>(packet);
        if (mAsDelivered) return {{raw.frame.pixels, raw.frame.rowBytes, mRowBytes, mFacts.size.height}};
        return {
            {raw.converted.data(), static_cast<std::ptrdiff_t>(mRowBytes), mRowBytes, mFacts.size.height}};
    }
    std::string PixelsName() const override {
        if (!mAsDelivered || IsAsDelivered(mFacts)) return mFormat.bits == 16 ? "rgba64le" : "bgra";
        return std::string(FindPixelFormatOf(mFacts.raster)->name);
    }

  private:
    std::uint64_t FileBytes(std::int64_t frames) const {
        return std::uint64_t{mRowBytes} * mFacts.size.height * static_cast<std::uint64_t>(frames);
    }

    const StreamFacts mFacts;
    const PackedFormat mFormat;
    const bool mAsDelivered;
    const std::size_t mRowBytes;
    OutputFile mFile;
};

} // namespace

std::unique_ptr<Target> MakeRawTarget(const std::filesystem::path& path, bool native,
                                      const StreamFacts& facts) {
    return std::make_unique<RawTarget>(path, native, facts);
}

} // namespace corvane
