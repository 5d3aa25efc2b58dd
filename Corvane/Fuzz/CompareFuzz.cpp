// Sought: pictures, times and facts of a video, as decoders may make them of bad files, that crash a
// comparison or make it count what can't be.
#include <cstring>
#include <memory>

#include <fuzzer/FuzzedDataProvider.h>

#include "Compare/Comparison.h"
#include "Require.h"
#include "Tests/TestFolder.h"
#include "Tests/TestSettings.h"

using namespace corvane;

/// A number from 0 up to `most`, which may be 255.
static std::uint32_t UpTo(FuzzedDataProvider& data, std::uint32_t most) {
    return data.ConsumeIntegralInRange<std::uint32_t>(0, most);
}

/// A time that is usual, or any.
static std::int64_t Time(FuzzedDataProvider& data) {
    if (UpTo(data, 3) != 0) return data.ConsumeIntegral<std::int16_t>();
    return data.ConsumeIntegralInRange<std::int64_t>(1 - kTimeLimit, kTimeLimit - 1);
}

static Rate AnyRate(FuzzedDataProvider& data) {
    return {data.ConsumeIntegral<std::uint16_t>(), data.ConsumeIntegral<std::uint16_t>()};
}

/// Makes its pictures of the fuzzer's bytes.
class MadeVideo final : public Video {
  public:
    explicit MadeVideo(FuzzedDataProvider& data) : mData(data) {
        mFacts.codec = data.ConsumeBool() ? "ffv1" : "h264";
        mFacts.size = {1 + UpTo(data, 95), 1 + UpTo(data, 95)};
        mFacts.timeBase = AnyRate(data);
        mFacts.averageRate = AnyRate(data);
        if (data.ConsumeBool()) mFacts.aspect = {1 + UpTo(data, 98), 1 + UpTo(data, 98)};
        if (data.ConsumeBool()) mFacts.duration = Time(data);
        mFormat.yCbCr = data.ConsumeBool();
        mFormat.bits = 8 + static_cast<int>(UpTo(data, 8));
        mFormat.alpha = data.ConsumeBool();
        if (!mFormat.yCbCr) return;
        mFormat.subsampleW = static_cast<int>(UpTo(data, 2));
        mFormat.subsampleH = static_cast<int>(UpTo(data, 2));
        mFormat.fullRange = data.ConsumeBool();
    }

    const VideoFacts& Facts() const override { return mFacts; }
    bool SeekBefore(std::int64_t) override { return false; }
    void Stop() override {}

    bool Next(VideoPicture& picture) override {
        if (mData.remaining_bytes() == 0 || ++mPictures > 12) return false;
        picture = {};
        picture.format = mFormat;
        picture.size = mFacts.size;
        if (UpTo(mData, 7) == 0) picture.size.height = 1 + UpTo(mData, 95);
        if (UpTo(mData, 7) != 0) picture.time = Time(mData);
        picture.damaged = UpTo(mData, 15) == 0;
        picture.tags.matrix = static_cast<int>(UpTo(mData, 15));
        const auto planes = std::make_shared<std::array<std::unique_ptr<std::byte[]>, 4>>();
        for (int plane = 0; plane < mFormat.Planes(); ++plane) {
            auto& bytes = (*planes)[static_cast<std::size_t>(plane)];
            bytes = MakePlane(plane, picture);
            picture.plane[static_cast<std::size_t>(plane)] = bytes.get();
        }
        picture.owner = planes;
        return true;
    }

  private:
    /// Rows of one color but for some pixels, in a block that ends with the last of them.
    std::unique_ptr<std::byte[]> MakePlane(int plane, VideoPicture& picture) {
        const std::size_t sampleBytes = mFormat.SampleBytes();
        const std::size_t row = mFormat.PlaneWidth(plane, picture.size.width) * sampleBytes;
        const std::size_t height = mFormat.PlaneHeight(plane, picture.size.height);
        picture.stride[static_cast<std::size_t>(plane)] = static_cast<std::ptrdiff_t>(row);
        auto bytes = std::make_unique<std::byte[]>(row * height);
        const unsigned first = mData.ConsumeIntegral<std::uint16_t>(), step = UpTo(mData, 255);
        const std::uint32_t pixels = UpTo(mData, 20);
        const auto set = [&](std::size_t at, unsigned sample) {
            const auto held = static_cast<std::uint16_t>(sample & ((1u << mFormat.bits) - 1));
            std::memcpy(bytes.get() + at, &held, sampleBytes);
        };
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < row; x += sampleBytes)
                set(y * row + x, first + step * static_cast<unsigned>(y));
        for (std::uint32_t i = 0; i < pixels; ++i)
            set(mData.ConsumeIntegral<std::uint16_t>() % (row * height / sampleBytes) * sampleBytes,
                mData.ConsumeIntegral<std::uint16_t>());
        return bytes;
    }

    FuzzedDataProvider& mData;
    VideoFacts mFacts;
    PlanarFormat mFormat;
    int mPictures = 0;
};

/// A clip with or without fields, of solid fields or a gradient.
static std::unique_ptr<Clip> ClipOf(FuzzedDataProvider& data) {
    static const auto bundle = std::make_shared<Bundle>(Bundle::Find(corvane::testing::BundlePath()));
    static const corvane::testing::TestFolder folder;
    const std::string members = ",\"mFieldType\":" + std::to_string(UpTo(data, 2)) +
                                ",\"mRenderFormat\":" + std::to_string(UpTo(data, 1));
    return Clip::OpenFile(bundle, folder.Write("clip.synthex", corvane::testing::SettingsText(members)));
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    const std::unique_ptr<Clip> clip = ClipOf(data);
    MadeVideo video(data);
    const std::atomic<bool> cancel{false};
    const CompareReport report = CompareClip(
        *clip, video, {}, [](std::int64_t, std::int64_t) {}, cancel);
    Require(report.framesMatched <= report.framesCompared);
    for (const Finding& finding : report.findings) {
        Require(finding.weight >= 0 && finding.weight <= 1);
        Require(finding.sentence.find("nan ") == std::string::npos);
    }
    return 0;
}
