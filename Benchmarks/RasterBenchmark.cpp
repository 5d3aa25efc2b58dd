// The raster service and the frame pool alone, beside the memory's own speed for the same bytes. A round
// times each of them in turn, so that what else the machine does falls on all alike; the counters are ratios
// of medians:
//   of_memset   the speed of memset over the same buffers is 1
//   of_fill     the speed of a plain loop of the widest vector stores over them is 1
//   of_frame    the time of filling the same frame is 1
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Rasterkit.h"
#include "Services/FrameBuffers.h"

namespace {

using Clock = std::chrono::steady_clock;
using Color = std::array<float, 4>;

template <class Work>
double Seconds(const Work& work) {
    const auto start = Clock::now();
    work();
    benchmark::ClobberMemory();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

/// A frame of the pool, given back at the end.
struct Buffer {
    Buffer(CvPixelFormat code, std::uint32_t frameWidth, std::uint32_t frameHeight)
        : width(frameWidth), height(frameHeight) {
        corvane::VexelCreator2Suite()->Create(&handle, kCvVexelAccess_ReadWrite, code, width, height, 0, 0, 1,
                                              1);
        corvane::VexelSuite()->GetPixels(handle, kCvVexelAccess_ReadWrite, &pixels);
        corvane::VexelSuite()->GetRowBytes(handle, &rowBytes);
        format = BEPixelFormatToRKPixelFormat(SDKToBEPixelFormat(code));
    }
    Buffer(Buffer&& other) noexcept : Buffer(other) { other.handle = nullptr; }
    ~Buffer() { corvane::VexelSuite()->Dispose(handle); }

    std::size_t Bytes() const { return static_cast<std::size_t>(rowBytes) * height; }

    CvVexelHandle handle = nullptr;
    char* pixels = nullptr;
    std::int32_t rowBytes = 0;
    std::uint32_t width, height;
    RK_PixelFormat format = 0;

  private:
    Buffer(const Buffer&) = default;
};

void FillFields(const Buffer& b, float shade) {
    const Color upper{0.1f, 0.2f, shade, 1.0f}, lower{shade, 0.6f, 0.3f, 1.0f};
    RK_FillWithColor(b.pixels, 2 * b.rowBytes, b.width, b.height / 2, b.format, upper.data(),
                     kRK_FillReplace);
    RK_FillWithColor(b.pixels + b.rowBytes, 2 * b.rowBytes, b.width, b.height / 2, b.format, lower.data(),
                     kRK_FillReplace);
}

void FillWhole(const Buffer& b, float shade) {
    const Color color{0.1f, 0.2f, shade, 1.0f};
    RK_FillWithColor(b.pixels, b.rowBytes, b.width, b.height, b.format, color.data(), kRK_FillReplace);
}

void FillByRows(const Buffer& b, float shade) {
    for (std::uint32_t row = 0; row < b.height; ++row) {
        const float blend = static_cast<float>(row) / static_cast<float>(b.height);
        const Color color{0.1f + blend * shade, 0.7f - blend * 0.3f, blend, 1.0f};
        RK_FillWithColor(b.pixels + static_cast<std::size_t>(row) * static_cast<std::size_t>(b.rowBytes),
                         b.rowBytes, b.width, 1, b.format, color.data(), kRK_FillReplace);
    }
}

void Print(const Buffer& b, std::int32_t number) {
    RK_PrintNum(b.pixels, b.rowBytes, b.format, b.width, b.height, number, 0.12f, {0.05f, 0.05f},
                kRK_PrintBoxed);
}

#if defined(__x86_64__)
[[gnu::target_clones("avx2", "default")]]
#endif
void FillWithVectors(std::uint32_t* words, std::size_t count, std::uint32_t word) {
    for (std::size_t i = 0; i < count; ++i) words[i] = word;
}

void Fill(benchmark::State& state, void (*fill)(const Buffer&, float), CvPixelFormat format,
          std::uint32_t width, std::uint32_t height, std::size_t inFlight) {
    std::vector<Buffer> buffers;
    for (std::size_t i = 0; i < inFlight; ++i) FillWhole(buffers.emplace_back(format, width, height), 0.0f);
    // A buffer alone is timed several times in a row, so that it is as hot as it becomes.
    constexpr std::size_t kFills = 8;
    const auto each = [&](const auto& work) {
        work(buffers[0], 0.0f);
        return Seconds([&] {
            for (std::size_t i = 0; i < kFills; ++i)
                work(buffers[i % inFlight], static_cast<float>(i) / static_cast<float>(kFills));
        });
    };
    std::vector<double> fills, memsets, loops;
    for (auto _ : state) {
        fills.push_back(each(fill));
        memsets.push_back(each([](const Buffer& b, float shade) {
            std::memset(b.pixels, static_cast<int>(255.0f * shade), b.Bytes());
        }));
        loops.push_back(each([](const Buffer& b, float shade) {
            FillWithVectors(reinterpret_cast<std::uint32_t*>(b.pixels), b.Bytes() / 4,
                            static_cast<std::uint32_t>(1e9f * shade));
        }));
        state.SetIterationTime(fills.back() / kFills);
    }
    const double time = Median(fills);
    state.counters["of_memset"] = Median(memsets) / time;
    state.counters["of_fill"] = Median(loops) / time;
    state.counters["GB/s"] = static_cast<double>(kFills * buffers[0].Bytes()) / time / 1e9;
}

void RegisterFills() {
    struct Row {
        const char* name;
        void (*fill)(const Buffer&, float);
    };
    for (const Row& row : {Row{"Whole", FillWhole}, Row{"Fields", FillFields}, Row{"Rows", FillByRows}})
        for (const CvPixelFormat format : {CvPixelFormat_BGRA_4444_8u, CvPixelFormat_BGRA_4444_32f})
            for (const std::uint32_t height : {1080u, 2160u})
                for (const std::size_t inFlight : {1u, 8u}) {
                    const std::string name =
                        std::string(row.name) + (format == CvPixelFormat_BGRA_4444_8u ? "/8u/" : "/32f/") +
                        std::to_string(height) + "/in_flight:" + std::to_string(inFlight);
                    benchmark::RegisterBenchmark(name.c_str(), Fill, row.fill, format, height / 9 * 16,
                                                 height, inFlight)
                        ->UseManualTime()
                        ->Unit(benchmark::kMicrosecond);
                }
}

/// The number on a frame that was just filled.
void PrintNumber(benchmark::State& state, CvPixelFormat format, std::uint32_t height) {
    const Buffer buffer(format, height / 9 * 16, height);
    std::vector<double> prints, fills;
    std::int32_t number = 1000;
    for (auto _ : state) {
        fills.push_back(Seconds([&] { FillFields(buffer, 0.5f); }));
        prints.push_back(Seconds([&] { Print(buffer, number++); }));
        state.SetIterationTime(prints.back());
    }
    state.counters["of_frame"] = Median(prints) / Median(fills);
}
BENCHMARK_CAPTURE(PrintNumber, 8u_1080, CvPixelFormat_BGRA_4444_8u, 1080)->UseManualTime();
BENCHMARK_CAPTURE(PrintNumber, 8u_2160, CvPixelFormat_BGRA_4444_8u, 2160)->UseManualTime();
BENCHMARK_CAPTURE(PrintNumber, 32f_1080, CvPixelFormat_BGRA_4444_32f, 1080)->UseManualTime();

/// A call that fills eight pixels: little but the checks and the conversion of the colour.
void OneColor(benchmark::State& state, RK_PixelFormat format) {
    alignas(64) std::array<std::byte, 128> pixels;
    Color color{0.3f, 0.7f, 0.2f, 1.0f};
    for (auto _ : state) {
        color[1] += 1e-7f;
        RK_FillWithColor(pixels.data(), 128, 8, 1, format, color.data(), kRK_FillReplace);
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(OneColor, BGRA_8u, 8u);
BENCHMARK_CAPTURE(OneColor, VUYA_8u, 12u);
BENCHMARK_CAPTURE(OneColor, BGRA_32f, 9u);
BENCHMARK_CAPTURE(OneColor, VUYA_32f_709, 2061u);
BENCHMARK_CAPTURE(OneColor, BGRA_32f_Linear, 73u);

/// A frame made and given back.
void CreateAndDispose(benchmark::State& state) {
    for (auto _ : state) const Buffer buffer(CvPixelFormat_BGRA_4444_8u, 1920, 1080);
}
BENCHMARK(CreateAndDispose);

/// The same with memory fresh from the system, and filled.
void FirstFrame(benchmark::State& state) {
    for (auto _ : state) {
        corvane::PurgeIdleFrames();
        state.SetIterationTime(
            Seconds([] { FillWhole(Buffer(CvPixelFormat_BGRA_4444_8u, 1920, 1080), 0.5f); }));
    }
}
BENCHMARK(FirstFrame)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    RegisterFills();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
}
