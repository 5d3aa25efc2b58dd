// Faults sought: a frame asked for at a time off by rounding, instances
// and frames that leak, frames that differ when threads render them at once.
#include "Engine/Clip.h"

#include <cstring>
#include <set>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Services/Frames/FrameBuffers.h"
#include "Services/TestHooks.h"
#include "Tests/TestSettings.h"

namespace {

using corvane::Clip;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

std::unique_ptr<Clip> OpenClip(const std::string& members) {
    return Clip::OpenPrefs(std::make_shared<corvane::Bundle>(corvane::testing::BundlePath()), "clip",
                           corvane::testing::SettingsText(members));
}

constexpr char k300Frames[] =
    R"(,"mVideoDuration":{"ticks":2542700160000},"mVideoFrameRate":{"ticksperframe":8475667200})";

std::vector<std::byte> PixelsOf(const corvane::Frame& frame) {
    const corvane::FrameView& view = frame.View();
    const std::size_t row = std::size_t{view.width} * corvane::BytesPerPixel(view.format);
    std::vector<std::byte> pixels(row * view.height);
    for (std::uint32_t y = 0; y < view.height; ++y)
        std::memcpy(pixels.data() + y * row,
                    view.pixels + std::size_t{y} * static_cast<std::size_t>(view.rowBytes), row);
    return pixels;
}

TEST(Clip, EveryFrameIsItsOwnAndNoneLiesOutside) {
    const auto clip = OpenClip(k300Frames);
    std::set<std::vector<std::byte>> pictures;
    for (std::int64_t frame = 0; frame < clip->Info().frames; ++frame)
        pictures.insert(PixelsOf(clip->GetFrame(frame)));
    EXPECT_EQ(pictures.size(), 300u) << "two frames print the same number";
    for (const std::int64_t frame : {-1, 300}) EXPECT_THROW(clip->GetFrame(frame), corvane::Failure);
}

TEST(Clip, TheTimingOfWrappedSettingsIsFound) {
    const auto clip =
        Clip::OpenPrefs(std::make_shared<corvane::Bundle>(corvane::testing::BundlePath()), "clip",
                        R"({"SerializerWrappedObject":)" + corvane::testing::SettingsText() + "}");
    EXPECT_EQ(clip->Info().frames, 10);
}

TEST(Clip, WhatCanNotBeRenderedSaysWhy) {
    const std::pair<const char*, const char*> kRows[] = {
        {R"(,"mVideoFrameRate":{"ticksperframe":0})", "no frame rate"},
        {R"(,"mVideoFrameRate":{"ticksperframe":-5})", "no frame rate"},
        {R"(,"mVideoDuration":{"ticks":0})", "no duration"},
        {R"(,"mVideoDuration":{"ticks":-9223372036854775808})", "no duration"},
        {R"(,"mVideoDuration":{"ticks":5})", "shorter than one frame"},
        {R"(,"mPixelFormat":305419896)", "0x12345678"},
        {R"(,"mFrameWidth":0)", "0 x 48"},
        {R"(,"mFrameHeight":4294967295)", "64 x 4294967295"},
        {R"(,"mFrameWidth":70000,"mFrameHeight":70000)", "70000 x 70000"},
        {R"(,"mFrameWidth":32768,"mFrameHeight":32768)", "32768 x 32768"},
    };
    const std::int64_t live = corvane::GetFrameStatistics().liveFrames;
    for (const auto& [members, reason] : kRows) {
        const auto clip = OpenClip(members);
        EXPECT_THAT(clip->WhyNotRenderable(), HasSubstr(reason)) << members;
        EXPECT_THAT([&] { clip->GetFrame(0); }, ThrowsMessage<corvane::Failure>(HasSubstr("clip: ")));
    }
    EXPECT_EQ(corvane::GetFrameStatistics().liveFrames, live);
}

TEST(ThreadedRender, FramesAreTheSameFromManyThreads) {
    const std::string linear = fmt::format(R"(,"mPixelFormat":{})", CvPixelFormat_BGRA_4444_32f_Linear);
    for (const std::string& members : {std::string(), std::string(R"(,"mRenderFormat":1)"), linear}) {
        const auto clip = OpenClip(k300Frames + members);
        constexpr std::int64_t kFrames = 60;
        std::vector<std::vector<std::byte>> serial, threaded(kFrames);
        std::vector<std::jthread> threads;
        std::atomic<std::int64_t> next{0};
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (std::int64_t frame = next++; frame < kFrames; frame = next++)
                    threaded[static_cast<std::size_t>(frame)] = PixelsOf(clip->GetFrame(frame));
            });
        threads.clear();
        for (std::int64_t frame = 0; frame < kFrames; ++frame)
            serial.push_back(PixelsOf(clip->GetFrame(frame)));
        EXPECT_EQ(serial, threaded) << members;
    }
}

// The plug-in knows no locks, and fetches the suites of frames once in a process: two first frames at a time
// would race for them.
TEST(ThreadedRender, TheFirstFrameAndOtherSelectorsAreSentAlone) {
    static std::atomic<int> fetching[2], together;
    corvane::SetSuiteRefusal([](const char* name, std::int32_t) {
        std::atomic<int>& mine =
            fetching[std::strcmp(name, kCvLegacySuite) == 0]; // selector 37's, or a frame's
        together += ++mine > 1;
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        --mine;
        return false;
    });
    const auto bundle = std::make_shared<corvane::Bundle>(corvane::testing::BundlePath());
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] { corvane::DeliveredFormat(bundle, CvPixelFormat_BGRA_4444_8u); });
    }
    corvane::SetSuiteRefusal(nullptr);
    EXPECT_EQ(together, 0);
}

} // namespace
