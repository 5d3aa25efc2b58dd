// Selector 47: the whole call, and the frame's return to the pool, beside the memory's own speed for the same
// bytes in the same run. The counters:
//   of_best     the speed of the best plain way of writing the same bytes to the same buffers is 1
//   of_plain    the speed of the same frame without the number is 1
//   allocations, faults   heap allocations and page faults of all timed frames together
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "Engine/Clip.h"
#include "PlainFills.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/TestHooks.h"

namespace {

std::atomic<std::int64_t> gAllocations{0};

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++gAllocations;
    if (void* const block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kFramesPerRound = 24;
constexpr int kFrames = 500;

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

std::int64_t PageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

/// What a benchmark renders.
struct Subject {
    CvPixelFormat format;
    std::uint32_t width, height;
    bool gradient;
    bool interlaced;
};

std::shared_ptr<corvane::Bundle> TheBundle() {
    static const auto bundle = std::make_shared<corvane::Bundle>(std::filesystem::path(SYNTHEX_BUILD_DIR) /
                                                                 "lib/ImporterSynthex.bundle");
    return bundle;
}

std::unique_ptr<corvane::Clip> ClipOf(const Subject& subject) {
    return corvane::Clip::OpenPrefs(
        TheBundle(), "benchmark",
        fmt::format(
            R"({{"mPixelFormat":{},"mFrameWidth":{},"mFrameHeight":{},"mFieldType":{},"mRenderFormat":{},)"
            R"("mUpperFieldColor":{{"mAlphaPart":1,"mRedPart":0.9,"mGreenPart":0.3,"mBluePart":0.1}},)"
            R"("mTopGradiantColorEnd":{{"mAlphaPart":1,"mRedPart":0.2,"mGreenPart":0.5,"mBluePart":0.8}},)"
            R"("mVideoDuration":{{"ticks":{}}},"mVideoFrameRate":{{"ticksperframe":10160640000}}}})",
            subject.format, subject.width, subject.height, subject.interlaced ? 1 : 0,
            subject.gradient ? 1 : 0, kFrames * 10160640000));
}

/// Seconds a frame of `clip`, each given back when `inFlight` newer ones are there.
double TimeFrames(const corvane::Clip& clip, std::vector<corvane::Frame>& flight, std::int64_t& next) {
    const auto start = Clock::now();
    for (int i = 0; i < kFramesPerRound; ++i, ++next) {
        corvane::Frame& slot = flight[static_cast<std::size_t>(next) % flight.size()];
        slot = corvane::Frame(); // the oldest goes back first
        slot = clip.GetFrame(next % kFrames);
    }
    return Seconds(Clock::now() - start) / kFramesPerRound;
}

/// Seconds a buffer of a way of filling, over the buffers of the frames in flight.
double TimeFills(const std::vector<corvane::Frame>& flight, const std::function<void(std::byte*)>& fill) {
    const auto start = Clock::now();
    for (std::size_t i = 0; i < kFramesPerRound; ++i)
        fill(const_cast<std::byte*>(flight[i % flight.size()].View().pixels));
    return Seconds(Clock::now() - start) / kFramesPerRound;
}

void Render(benchmark::State& state, const Subject& subject, std::size_t inFlight) {
    const auto clip = ClipOf(subject);
    std::vector<corvane::Frame> flight(inFlight);
    std::int64_t next = 0;
    TimeFrames(*clip, flight, next); // fills the pool
    const corvane::FrameView& view = flight.front().View();
    const FillShape shape = subject.gradient     ? FillShape::kRows
                            : subject.interlaced ? FillShape::kFields
                                                 : FillShape::kSolid;
    const auto ways = PlainFills(
        {shape, static_cast<std::size_t>(view.rowBytes), view.height, corvane::BytesPerPixel(view.format)});
    std::vector<double> frames;
    std::vector<std::vector<double>> fills(ways.size());
    std::int64_t allocations = 0, faults = 0;
    for (auto _ : state) {
        const std::int64_t allocationsBefore = gAllocations, faultsBefore = PageFaults();
        frames.push_back(TimeFrames(*clip, flight, next));
        allocations += gAllocations - allocationsBefore;
        faults += PageFaults() - faultsBefore;
        for (std::size_t way = 0; way < ways.size(); ++way)
            fills[way].push_back(TimeFills(flight, ways[way]));
        state.SetIterationTime(frames.back());
    }
    const double time = Median(frames);
    double best = Median(fills.front());
    for (std::vector<double>& times : fills) best = std::min(best, Median(times));
    state.counters["of_best"] = best / time;
    state.counters["GB/s"] = static_cast<double>(subject.width) * subject.height *
                             corvane::BytesPerPixel(flight[0].View().format) / time / 1e9;
    state.counters["allocations"] = static_cast<double>(allocations);
    state.counters["faults"] = static_cast<double>(faults);
}

/// The same frame without the number, made directly through the host's services: settings can't leave it out.
double TimeWithoutNumber(const Subject& subject) {
    const float bgra[2][4] = {{0.1f, 0.3f, 0.9f, 1.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};
    const RK_PixelFormat raster = BEPixelFormatToRKPixelFormat(SDKToBEPixelFormat(subject.format));
    const auto start = Clock::now();
    for (int i = 0; i < kFramesPerRound; ++i) {
        CvVexelHandle handle = nullptr;
        corvane::VexelCreator2Suite()->Create(&handle, kCvVexelAccess_ReadWrite, subject.format,
                                              subject.width, subject.height, 0, 0, 1, 1);
        const corvane::Frame frame(handle);
        auto* const base = const_cast<std::byte*>(frame.View().pixels);
        const std::int32_t rowBytes = frame.View().rowBytes;
        const auto row = [&](std::uint32_t y) { return base + static_cast<std::size_t>(rowBytes) * y; };
        if (subject.gradient)
            for (std::uint32_t y = 0; y < subject.height; ++y)
                RK_FillWithColor(row(y), rowBytes, subject.width, 1, raster, bgra[y % 2], kRK_FillReplace);
        else
            for (const std::uint32_t field : {0u, 1u})
                RK_FillWithColor(row(field), 2 * rowBytes, subject.width, subject.height / 2, raster,
                                 bgra[field], kRK_FillReplace);
    }
    return Seconds(Clock::now() - start) / kFramesPerRound;
}

void Number(benchmark::State& state, bool gradient) {
    const Subject subject{CvPixelFormat_BGRA_4444_8u, 1920, 1080, gradient, true};
    const auto clip = ClipOf(subject);
    std::vector<corvane::Frame> flight(1);
    std::int64_t next = 0;
    TimeFrames(*clip, flight, next);
    flight.front() = corvane::Frame();
    std::vector<double> with, without;
    for (auto _ : state) {
        with.push_back(TimeFrames(*clip, flight, next));
        flight.front() = corvane::Frame();
        without.push_back(TimeWithoutNumber(subject));
        state.SetIterationTime(with.back());
    }
    state.counters["of_plain"] = Median(without) / Median(with);
}

/// Two threads beside one.
void TwoThreads(benchmark::State& state) {
    const auto clip = ClipOf({CvPixelFormat_BGRA_4444_8u, 1920, 1080, true, false});
    constexpr int kRounds = 20;
    const auto work = [&clip] {
        std::vector<corvane::Frame> flight(1);
        std::int64_t next = 0;
        for (int i = 0; i < kRounds; ++i) TimeFrames(*clip, flight, next);
    };
    work();
    std::vector<double> ones, twos;
    for (auto _ : state) {
        auto start = Clock::now();
        work();
        ones.push_back(Seconds(Clock::now() - start));
        start = Clock::now();
        std::thread other(work);
        work();
        other.join();
        twos.push_back(Seconds(Clock::now() - start));
        state.SetIterationTime(twos.back());
    }
    state.counters["of_one_thread"] = 2 * Median(ones) / Median(twos);
}

/// The first frame of a process: the pool is cold.
void FirstFrame(benchmark::State& state) {
    const auto clip = ClipOf({CvPixelFormat_BGRA_4444_8u, 1920, 1080, false, false});
    for (auto _ : state) {
        corvane::PurgeIdleFrames();
        const auto start = Clock::now();
        const corvane::Frame frame = clip->GetFrame(0);
        state.SetIterationTime(Seconds(Clock::now() - start));
    }
}

void RegisterAll() {
    struct Size {
        const char* name;
        std::uint32_t width, height;
    };
    for (const Size& size : {Size{"1080p", 1920, 1080}, Size{"2160p", 3840, 2160}})
        for (const bool isFloat : {false, true})
            for (const char* const kind : {"fields", "solid", "gradient"})
                for (const std::size_t inFlight : {1u, 8u}) {
                    const Subject subject{isFloat ? CvPixelFormat_BGRA_4444_32f : CvPixelFormat_BGRA_4444_8u,
                                          size.width, size.height, kind[0] == 'g', kind[0] == 'f'};
                    const std::string name = fmt::format("Render/{}/{}/{}/in_flight:{}", size.name,
                                                         isFloat ? "32f" : "8u", kind, inFlight);
                    benchmark::RegisterBenchmark(
                        name.c_str(), [=](benchmark::State& state) { Render(state, subject, inFlight); })
                        ->UseManualTime()
                        ->Unit(benchmark::kMicrosecond)
                        ->Iterations(isFloat ? 10 : 30);
                }
    benchmark::RegisterBenchmark("Number/fields", [](benchmark::State& state) { Number(state, false); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(60);
    benchmark::RegisterBenchmark("Number/gradient", [](benchmark::State& state) { Number(state, true); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(60);
    benchmark::RegisterBenchmark("TwoThreads", TwoThreads)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(10);
    benchmark::RegisterBenchmark("FirstFrame", FirstFrame)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(20);
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
