#include "Y4mTarget.h"

#include <cstring>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Export/Files/OutputFile.h"
#include "Export/Files/PartFile.h"
#include "Export/Picture/PictureConverter.h"

namespace corvane {
namespace {

constexpr std::string_view kFrameMark = "FRAME\n";

struct Sampling {
    PlanarFormat planes;
    std::string tag;    // after the letter C
    std::string pixels; // what libav calls them
};

Sampling ParseSampling(const std::string& name, const StreamFacts& facts) {
    struct Row {
        std::string_view name;
        int subsampleW;
        int subsampleH;
    };
    constexpr Row kSamplings[] = {{"420", 1, 1}, {"422", 1, 0}, {"444", 0, 0}};
    constexpr std::pair<std::string_view, int> kDepths[] = {{"", 0},     {"p8", 8},   {"p10", 10},
                                                            {"p12", 12}, {"p14", 14}, {"p16", 16}};
    const int usual = facts.IsFloat() ? 16 : 8;
    for (const Row& row : kSamplings)
        for (const auto& [suffix, depth] : kDepths)
            if (name == fmt::format("{}{}", row.name, suffix)) {
                const int bits = depth != 0 ? depth : usual;
                PlanarFormat planes;
                planes.bits = bits;
                planes.subsampleW = row.subsampleW;
                planes.subsampleH = row.subsampleH;
                if (bits > 8)
                    return {planes, fmt::format("{}p{}", row.name, bits),
                            fmt::format("yuv{}p{}le", row.name, bits)};
                // The plain tag of 8-bit 4:2:0 would mean chroma in the center.
                return {planes, row.name == "420" ? "420mpeg2" : std::string(row.name),
                        fmt::format("yuv{}p", row.name)};
            }
    throw UsageFailure(fmt::format(
        "y4m has no codec {}; choose 420, 422 or 444, or one with its bits such as 422p10", name));
}

std::string HeaderOf(const StreamFacts& facts, const std::string& tag) {
    constexpr char kOrder[] = {'p', 't', 'b'};
    return fmt::format("YUV4MPEG2 W{} H{} F{}:{} I{} A{}:{} C{} XYSCSS={} XCOLORRANGE=LIMITED\n",
                       facts.size.width, facts.size.height, facts.rate.scale, facts.rate.sampleSize,
                       kOrder[static_cast<int>(facts.order)], facts.aspect.numerator,
                       facts.aspect.denominator, tag, tag == "420mpeg2" ? "420MPEG2" : tag);
}

// One frame as it is in the file: the mark, then the planes without gaps.
struct Y4mPacket final : Packet {
    Y4mPacket(const StreamFacts& facts, const PlanarFormat& format, std::size_t size)
        : converter(facts, format), bytes(size + kFrameMark.size()) {
        std::memcpy(bytes.data(), kFrameMark.data(), kFrameMark.size());
        std::byte* next = bytes.data() + kFrameMark.size();
        for (int plane = 0; plane < 3; ++plane) {
            const std::size_t row = format.PlaneWidth(plane, facts.size.width) * format.SampleBytes();
            picture.plane[std::size_t(plane)] = next;
            picture.stride[std::size_t(plane)] = static_cast<std::ptrdiff_t>(row);
            next += row * format.PlaneHeight(plane, facts.size.height);
        }
    }

    PictureConverter converter;
    std::vector<std::byte> bytes;
    PlanarPicture picture;
    PaintedRows painted;
};

class Y4mTarget final : public Target {
  public:
    Y4mTarget(const std::filesystem::path& path, const Sampling& sampling, const StreamFacts& facts)
        : mFacts(facts), mPlanes(sampling.planes), mPixels(sampling.pixels),
          mHeader(HeaderOf(facts, sampling.tag)), mFile(path) {
        mFile.Write(std::as_bytes(std::span(mHeader)));
    }

    std::unique_ptr<Packet> NewPacket() override {
        return std::make_unique<Y4mPacket>(mFacts, mPlanes, PictureBytes());
    }

    void Prepare(const FrameView& frame, std::int64_t, Packet& packet) override {
        auto& y4m = static_cast<Y4mPacket&>(packet);
        y4m.converter.Convert(frame, y4m.picture, y4m.painted);
    }

    void Consume(Packet& packet) override { mFile.Write(static_cast<Y4mPacket&>(packet).bytes); }
    std::vector<std::filesystem::path> WorkingPaths() const override { return {mFile.WorkingPath()}; }
    std::string Finish() override { return mFile.Commit(); }
    bool KeepsAlpha() const override { return false; }
    std::uint64_t BytesWritten() const override { return mFile.BytesWritten(); }

    std::int64_t PartFrames() const override { return 1; }
    bool Append(const std::filesystem::path& part, std::int64_t frames,
                const std::atomic<bool>& cancel) override {
        return AppendPart(part, std::as_bytes(std::span(mHeader)),
                          static_cast<std::uint64_t>(frames) * (kFrameMark.size() + PictureBytes()), mFile,
                          cancel);
    }

    Planes PlanesOf(const FrameView&, Packet& packet) const override {
        const auto picture = std::span(static_cast<Y4mPacket&>(packet).bytes).subspan(kFrameMark.size());
        return {{picture.data(), std::ssize(picture), picture.size(), 1}};
    }
    std::string PixelsName() const override { return mPixels; }

  private:
    std::size_t PictureBytes() const {
        std::size_t size = 0;
        for (int plane = 0; plane < 3; ++plane)
            size += std::size_t{mPlanes.PlaneWidth(plane, mFacts.size.width)} *
                    mPlanes.PlaneHeight(plane, mFacts.size.height) * mPlanes.SampleBytes();
        return size;
    }

    const StreamFacts mFacts;
    const PlanarFormat mPlanes;
    const std::string mPixels;
    const std::string mHeader;
    OutputFile mFile;
};

} // namespace

std::unique_ptr<Target> MakeY4mTarget(const std::filesystem::path& path, const std::string& sampling,
                                      const StreamFacts& facts) {
    return std::make_unique<Y4mTarget>(path, ParseSampling(sampling.empty() ? "420" : sampling, facts),
                                       facts);
}

} // namespace corvane
