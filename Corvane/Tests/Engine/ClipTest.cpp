// Faults sought: facts that differ from the settings, a frame asked for at a time off by rounding, instances
// and frames that leak, frames that differ when threads render them at once.
#include "Engine/Clip.h"

#include <cstring>
#include <fstream>
#include <set>
#include <thread>

#include <unistd.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Services/FrameBuffers.h"

namespace {

namespace fs = std::filesystem;
using corvane::Clip;
using testing::HasSubstr;

std::shared_ptr<corvane::Bundle> TheBundle() {
    return std::make_shared<corvane::Bundle>(fs::path(SYNTHEX_BUILD_DIR) / "lib/ImporterSynthex.bundle");
}

std::string Settings(const std::string& members) {
    return R"({"mPixelFormat":1634887522,"mFrameWidth":64,"mFrameHeight":48,"mFieldType":1,)"
           R"("mVideoDuration":{"ticks":2542700160000},"mVideoFrameRate":{"ticksperframe":8475667200})" +
           members + "}";
}

std::vector<std::byte> PixelsOf(const corvane::Frame& frame) {
    const corvane::FrameView& view = frame.View();
    const std::size_t row = std::size_t{view.width} * corvane::BytesPerPixel(view.format);
    std::vector<std::byte> pixels(row * view.height);
    for (std::uint32_t y = 0; y < view.height; ++y)
        std::memcpy(pixels.data() + y * row,
                    view.pixels + std::size_t{y} * static_cast<std::size_t>(view.rowBytes), row);
    return pixels;
}

TEST(Clip, FactsOfAFileAndOfAProjectAgree) {
    const fs::path path = fs::path(testing::TempDir()) / ("clip" + std::to_string(::getpid()) + ".synthex");
    const std::string text = Settings(R"(,"mFramePAR":{"numerator":40,"denominator":33})");
    std::ofstream(path) << text;
    const auto bundle = TheBundle();
    for (const bool wrapped : {false, true}) {
        const auto clip = wrapped
                              ? Clip::OpenPrefs(bundle, "clip", R"({"SerializerWrappedObject":)" + text + "}")
                              : Clip::OpenFile(bundle, path);
        const corvane::ClipInfo& info = clip->Info();
        EXPECT_EQ(info.width, 64u);
        EXPECT_EQ(info.height, 48u);
        EXPECT_EQ(info.parNumerator, 40u);
        EXPECT_EQ(info.parDenominator, 33u);
        EXPECT_EQ(info.fieldType, 1);
        EXPECT_EQ(info.depth, 32);
        EXPECT_EQ(info.scale, 30000u);
        EXPECT_EQ(info.sampleSize, 1001u);
        EXPECT_EQ(info.frames, 300);
        EXPECT_EQ(info.duration, 300u * 1001u);
        EXPECT_EQ(info.pixelFormat, CvPixelFormat_BGRA_4444_8u);
        EXPECT_EQ(info.deliveredFormat, CvPixelFormat_BGRA_4444_8u);
        EXPECT_EQ(clip->WhyNotRenderable(), "");
    }
    fs::remove(path);
}

TEST(Clip, EveryFrameIsItsOwn) {
    const auto clip = Clip::OpenPrefs(TheBundle(), "clip", Settings(""));
    std::set<std::vector<std::byte>> pictures;
    for (std::int64_t frame = 0; frame < clip->Info().frames; ++frame)
        pictures.insert(PixelsOf(clip->GetFrame(frame)));
    EXPECT_EQ(pictures.size(), 300u) << "two frames print the same number";
}

TEST(Clip, WhatCanNotBeRenderedSaysWhy) {
    struct Row {
        const char* members;
        const char* reason;
    };
    const auto bundle = TheBundle();
    const std::int64_t live = corvane::GetFrameStatistics().liveFrames;
    for (const Row& row :
         {Row{R"(,"mVideoFrameRate":{"ticksperframe":0})", "no frame rate"},
          Row{R"(,"mVideoFrameRate":{"ticksperframe":-5})", "no frame rate"},
          Row{R"(,"mVideoDuration":{"ticks":0})", "no duration"},
          Row{R"(,"mVideoDuration":{"ticks":-8475667200})", "no duration"},
          Row{R"(,"mVideoDuration":{"ticks":5})", "shorter than one frame"},
          Row{R"(,"mPixelFormat":305419896)", "0x12345678"}, Row{R"(,"mFrameWidth":0)", "0 x 48"},
          Row{R"(,"mFrameHeight":4294967295)", "64 x 4294967295"},
          Row{R"(,"mFrameWidth":70000,"mFrameHeight":70000)", "70000 x 70000"},
          Row{R"(,"mFrameWidth":32768,"mFrameHeight":32768)", "32768 x 32768"}}) {
        const auto clip = Clip::OpenPrefs(bundle, "the clip", Settings(row.members));
        EXPECT_THAT(clip->WhyNotRenderable(), HasSubstr(row.reason)) << row.members;
        try {
            clip->GetFrame(0);
            ADD_FAILURE() << row.members;
        } catch (const corvane::Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr("the clip: ")) << row.members;
        }
    }
    EXPECT_EQ(corvane::GetFrameStatistics().liveFrames, live);
}

TEST(Clip, NotFiniteColoursRender) {
    for (const CvPixelFormat format : {CvPixelFormat_BGRA_4444_8u, CvPixelFormat_VUYP_4444_8u_709,
                                       CvPixelFormat_PRGB_4444_32f_Linear, CvPixelFormat_V210_422_10u_601}) {
        const auto clip = Clip::OpenPrefs(
            TheBundle(), "clip",
            fmt::format(R"({{"mPixelFormat":{},"mFrameWidth":9,"mFrameHeight":7,"mRenderFormat":1,)"
                        R"("mTopGradiantColorStart":{{"mRedPart":1e300,"mAlphaPart":-1e300}},)"
                        R"("mTopGradiantColorEnd":{{"mRedPart":-1e300}},)"
                        R"("mVideoDuration":{{"ticks":10}},"mVideoFrameRate":{{"ticksperframe":1}}}})",
                        format));
        for (const std::int64_t frame : {0, 9}) EXPECT_EQ(clip->GetFrame(frame).View().width, 9u);
    }
}

TEST(Clip, FramesOutsideTheClipAreRefused) {
    const auto clip = Clip::OpenPrefs(TheBundle(), "clip", Settings(""));
    EXPECT_THROW(clip->GetFrame(-1), corvane::Failure);
    EXPECT_THROW(clip->GetFrame(300), corvane::Failure);
}

TEST(ThreadedRender, FramesAreTheSameFromManyThreads) {
    const std::string linear = fmt::format(R"(,"mPixelFormat":{})", CvPixelFormat_BGRA_4444_32f_Linear);
    for (const std::string& members : {std::string(), std::string(R"(,"mRenderFormat":1)"), linear}) {
        const auto clip = Clip::OpenPrefs(TheBundle(), "clip", Settings(members));
        constexpr std::int64_t kFrames = 60;
        std::vector<std::vector<std::byte>> serial, threaded(kFrames);
        std::vector<std::thread> threads;
        std::atomic<std::int64_t> next{0};
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (std::int64_t frame = next++; frame < kFrames; frame = next++)
                    threaded[static_cast<std::size_t>(frame)] = PixelsOf(clip->GetFrame(frame));
            });
        for (std::thread& thread : threads) thread.join();
        for (std::int64_t frame = 0; frame < kFrames; ++frame)
            serial.push_back(PixelsOf(clip->GetFrame(frame)));
        EXPECT_EQ(serial, threaded) << members;
    }
}

TEST(ThreadedRender, ClipsOpenAndCloseWhileOthersRender) {
    const auto bundle = TheBundle();
    const auto clip = Clip::OpenPrefs(bundle, "clip", Settings(""));
    const std::vector<std::byte> expected = PixelsOf(clip->GetFrame(7));
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 2; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i)
                wrong += Clip::OpenPrefs(bundle, "own", Settings(""))->Info().frames != 300;
        });
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) wrong += PixelsOf(clip->GetFrame(7)) != expected;
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
