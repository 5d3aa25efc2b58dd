#include "Services/Frames/FrameBuffers.h"

#include <array>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "Services/TestHooks.h"
#include "Tests/Services/Raster/ExpectedFormats.h"

namespace {

using namespace corvane;

constexpr CvPixelFormat kBGRA = 0x61726762;
constexpr CvPixelFormat kBGRAFloat = 0x61724742;

CvVexelHandle TryCreate(CvPixelFormat format, std::uint32_t width, std::uint32_t height) {
    CvVexelHandle handle = reinterpret_cast<CvVexelHandle>(std::uintptr_t{0xCDCDCDCDCDCDCDC0});
    const std::int32_t status = VexelCreator2Suite()->Create(&handle, 2, format, width, height, 0, 0, 10, 11);
    EXPECT_EQ(status < 0, handle == nullptr) << width << " x " << height;
    return handle;
}

char* Pixels(CvVexelHandle handle) {
    char* pixels = nullptr;
    EXPECT_EQ(VexelSuite()->GetPixels(handle, 2, &pixels), 0);
    return pixels;
}

std::int32_t Dispose(CvVexelHandle handle) {
    return VexelSuite()->Dispose(handle);
}

/// How many of the suite's questions about a frame fail, and their answers; 1 to 8 if there is none.
std::array<std::int64_t, 9> Facts(CvVexelHandle handle) {
    CvRect bounds{1, 2, 3, 4};
    std::int32_t rowBytes = 5;
    CvPixelFormat format = 6;
    std::uint32_t numerator = 7, denominator = 8;
    const CvVexelSuite1& suite = *VexelSuite();
    const int failures = (suite.GetBounds(handle, &bounds) < 0) + (suite.GetRowBytes(handle, &rowBytes) < 0) +
                         (suite.GetPixelFormat(handle, &format) < 0) +
                         (suite.GetPixelAspectRatio(handle, &numerator, &denominator) < 0);
    return {failures, bounds.left, bounds.top, bounds.right, bounds.bottom,
            rowBytes, format,      numerator,  denominator};
}

class FrameBuffersTest : public testing::Test {
  protected:
    void SetUp() override { PurgeIdleFrames(); }
    void TearDown() override {
        SetFrameLimits(kDefaultMaxFrameSide, kDefaultMaxFrameBytes);
        FailFrameCreation(0);
        PurgeIdleFrames();
        EXPECT_EQ(GetFrameStatistics().liveFrames, 0u);
    }
};

// Catches swapped outputs, rows that are not aligned, and memory that is too small.
TEST_F(FrameBuffersTest, AFrameIsWhatWasAsked) {
    const CvVexelHandle frame = TryCreate(kBGRA, 47, 33);
    EXPECT_EQ(Facts(frame), (std::array<std::int64_t, 9>{0, 0, 0, 47, 33, 192, kBGRA, 10, 11}));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Pixels(frame)) % 64, 0u);
    std::memset(Pixels(frame), 1, 192 * 33);
    EXPECT_EQ(Dispose(frame), 0);
}

// Catches a pool that hands out cold or wrong memory, or takes fresh memory in a steady render.
TEST_F(FrameBuffersTest, TheBufferReturnedLastIsHandedOutFirst) {
    const CvVexelHandle first = TryCreate(kBGRA, 800, 600), second = TryCreate(kBGRA, 800, 600);
    char* const firstPixels = Pixels(first);
    char* const secondPixels = Pixels(second);
    EXPECT_NE(firstPixels, secondPixels);
    Dispose(second);
    Dispose(first);
    const CvVexelHandle other = TryCreate(kBGRAFloat, 800, 600);
    const std::uint64_t allocations = GetFrameStatistics().allocations;
    for (int frame = 0; frame < 3; ++frame) {
        const CvVexelHandle last = TryCreate(kBGRA, 800, 600), before = TryCreate(kBGRA, 800, 600);
        EXPECT_EQ(Pixels(last), firstPixels);
        EXPECT_EQ(Pixels(before), secondPixels);
        Dispose(before);
        Dispose(last);
    }
    EXPECT_EQ(GetFrameStatistics().allocations, allocations);
    Dispose(other);
}

// Catches a size that wraps in 32 or 64 bits to one that can be had: 46341 x 46341 x 4 is 18532 in 32 bits.
TEST_F(FrameBuffersTest, SizesOverTheLimitFail) {
    constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
    constexpr std::pair<std::uint32_t, std::uint32_t> kRefused[] = {
        {46341, 46341}, {70000, 70000}, {kLargest, 1},        {1, kLargest},  {32769, 0},          {32769, 1},
        {1, 32769},     {0, 32769},     {kLargest, kLargest}, {32768, 16385}, {1u << 30, 1u << 30}};
    for (const auto& [width, height] : kRefused) EXPECT_EQ(TryCreate(kBGRA, width, height), nullptr);
    EXPECT_EQ(TryCreate(kBGRAFloat, 32768, 4097), nullptr);
    for (const auto& [width, height] :
         {std::pair(32768u, 16384u), {32768u, 1u}, {1u, 32768u}, {0u, 5u}, {5u, 0u}, {0u, 0u}}) {
        const CvVexelHandle frame = TryCreate(kBGRA, width, height);
        EXPECT_NE(frame, nullptr) << width << " x " << height;
        EXPECT_NE(Pixels(frame), nullptr);
        Dispose(frame);
    }
    // With wider limits: a row that does not fit 32 bits, and more than the system has.
    SetFrameLimits(kLargest, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(TryCreate(kBGRA, 1u << 30, 4), nullptr);
    EXPECT_EQ(TryCreate(kBGRA, 1u << 26, 1u << 22), nullptr);
    SetFrameLimits(100, 4000);
    EXPECT_EQ(TryCreate(kBGRA, 101, 1), nullptr);
    EXPECT_EQ(TryCreate(kBGRA, 16, 63), nullptr);
    const CvVexelHandle frame = TryCreate(kBGRA, 16, 62);
    EXPECT_NE(frame, nullptr);
    Dispose(frame);
}

// Catches a frame in a format that nothing can draw in.
TEST_F(FrameBuffersTest, OnlyConcreteFormatsHaveFrames) {
    for (const ExpectedFormat& expected : kExpectedFormats) {
        std::int32_t answer = -1;
        EXPECT_EQ(PixelFormatSuite()->CanCreate(expected.code, &answer), 0);
        EXPECT_EQ(answer, expected.isExtended ? 0 : 1) << expected.name;
        const CvVexelHandle frame = TryCreate(expected.code, 4, 4);
        EXPECT_EQ(frame != nullptr, !expected.isExtended) << expected.name;
        if (frame) Dispose(frame);
    }
    EXPECT_EQ(TryCreate(0, 4, 4), nullptr);
}

// Catches a call on a bad handle that crashes or writes, and a buffer that comes into the pool twice.
TEST_F(FrameBuffersTest, NullAndDisposedHandlesFail) {
    const CvVexelHandle disposed = TryCreate(kBGRA, 8, 8);
    EXPECT_EQ(Dispose(disposed), 0);
    for (const CvVexelHandle handle : {CvVexelHandle{nullptr}, disposed}) {
        char* pixels = nullptr;
        EXPECT_LT(VexelSuite()->GetPixels(handle, 2, &pixels), 0);
        EXPECT_EQ(pixels, nullptr);
        EXPECT_EQ(Facts(handle), (std::array<std::int64_t, 9>{4, 1, 2, 3, 4, 5, 6, 7, 8}));
        EXPECT_LT(Dispose(handle), 0);
    }
    EXPECT_EQ(GetFrameStatistics().idleFrames, 1u);
    EXPECT_LT(VexelCreator2Suite()->Create(nullptr, 2, kBGRA, 8, 8, 0, 0, 1, 1), 0);
}

// Catches a pool that grows without end, by number or by bytes, and one that gives up what was used last.
TEST_F(FrameBuffersTest, IdleMemoryIsBounded) {
    std::vector<CvVexelHandle> frames;
    for (std::size_t i = 0; i < kMaxIdleFrames + 6; ++i) frames.push_back(TryCreate(kBGRA, 16, 16));
    char* const last = Pixels(frames.back());
    for (const CvVexelHandle frame : frames) Dispose(frame);
    EXPECT_EQ(GetFrameStatistics().idleFrames, kMaxIdleFrames);
    const CvVexelHandle reused = TryCreate(kBGRA, 16, 16);
    EXPECT_EQ(Pixels(reused), last);
    Dispose(reused);

    frames.clear();
    for (int i = 0; i < 4; ++i)
        frames.push_back(TryCreate(kBGRA, 16384, 8192)); // 512 MiB each, never touched
    for (const CvVexelHandle frame : frames) Dispose(frame);
    EXPECT_EQ(GetFrameStatistics().idleFrames, 2u);
    EXPECT_EQ(GetFrameStatistics().idleBytes, std::uint64_t{1} << 30);
    Dispose(TryCreate(kBGRA, 32768, 16384));
    EXPECT_EQ(GetFrameStatistics().idleFrames, 1u);
    PurgeIdleFrames();
    EXPECT_EQ(GetFrameStatistics().idleBytes, 0u);
}

} // namespace
