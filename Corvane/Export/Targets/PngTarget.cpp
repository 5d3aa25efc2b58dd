#include "PngTarget.h"

#include <vector>

#include <fmt/format.h>

#include "Export/Files/PictureFiles.h"
#include "PngImage.h"

namespace corvane {
namespace {

struct PngPacket final : Packet {
    explicit PngPacket(const StreamFacts& facts) : encoder(facts) {}

    PngImage encoder;
    std::vector<std::byte> pixels; // if they are wanted
    std::span<const std::byte> image;
    std::int64_t index = 0;
};

class PngTarget final : public Target {
  public:
    PngTarget(const std::filesystem::path& path, const StreamFacts& facts) : mFacts(facts), mFiles(path) {}

    std::unique_ptr<Packet> NewPacket() override { return std::make_unique<PngPacket>(mFacts); }

    void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) override {
        auto& png = static_cast<PngPacket&>(packet);
        png.image = png.encoder.Encode(frame);
        png.index = index;
    }

    void Consume(Packet& packet) override {
        const auto& png = static_cast<PngPacket&>(packet);
        mFiles.Write(png.index, png.image);
    }

    std::vector<std::filesystem::path> WorkingPaths() const override { return mFiles.WorkingPaths(); }

    std::string Finish() override { return mFiles.Commit(); }

    std::uint64_t BytesWritten() const override { return mFiles.BytesWritten(); }

    // Parts of a series write their own pictures of it: there is nothing to append.
    std::int64_t PartFrames() const override { return mFiles.IsSeries() ? 1 : 0; }

    Planes PlanesOf(const FrameView& frame, Packet& packet) const override {
        auto& png = static_cast<PngPacket&>(packet);
        png.encoder.ReadPixels(frame, png.pixels);
        return {{png.pixels.data(), std::ssize(png.pixels), png.pixels.size(), 1}};
    }
    std::string PixelsName() const override {
        return fmt::format("{}{}", mFacts.HasAlpha() ? "rgba" : "rgb",
                           !mFacts.IsFloat()   ? mFacts.HasAlpha() ? "" : "24"
                           : mFacts.HasAlpha() ? "64be"
                                               : "48be");
    }

  private:
    const StreamFacts mFacts;
    PictureFiles mFiles;
};

} // namespace

std::unique_ptr<Target> MakePngTarget(const std::filesystem::path& path, const StreamFacts& facts) {
    return std::make_unique<PngTarget>(path, facts);
}

} // namespace corvane
