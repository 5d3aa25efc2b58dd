// The viewer in a window of 1280 x 800: how long it is from asking for a frame to its picture on the screen,
// and how many frames playback leaves out. Of 1920 x 1080 clips at 30 frames per second.
//   viewer_benchmark [--seconds=N] [GOOGLE BENCHMARK OPTION...]    plays for N seconds (default 60)
// Counters:
//   median_ms, worst_ms   of 500 seeks to frames all over the clip
//   shown, dropped        frames of the playback
#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <benchmark/benchmark.h>

#include "Desktop/Loader/Display.h"
#include "Desktop/Viewer/Viewer.h"

namespace {

using corvane::desktop::Viewer;
using Clock = std::chrono::steady_clock;

constexpr int kSeeks = 500;
constexpr int kWidth = 1280;
constexpr int kHeight = 800;

int gSeconds = 60;

struct Kind {
    const char* name;
    const char* settings;
};

// An hour, so that the number has up to six digits.
#define TIMING                                                                                               \
    R"("mFrameWidth":1920,"mFrameHeight":1080,"mFramePAR":{"numerator":1,"denominator":1},)"                 \
    R"("mVideoDuration":{"ticks":914457600000000},"mVideoFrameRate":{"ticksperframe":8467200000})"

constexpr Kind kKinds[] = {
    {"bgra8/number", R"({"mPixelFormat":1634887522,"mRenderFormat":0,"mFieldType":1,)" TIMING "}"},
    {"bgra8/gradient", R"({"mPixelFormat":1634887522,"mRenderFormat":1,"mFieldType":0,)" TIMING "}"},
    {"v210/number", R"({"mPixelFormat":825307766,"mRenderFormat":0,"mFieldType":1,)" TIMING "}"},
};

/// A window with a clip of that kind, shown.
class Window {
  public:
    explicit Window(const Kind& kind)
        : mClip(corvane::Clip::OpenPrefs(
              std::make_shared<corvane::Bundle>(std::filesystem::path(SYNTHEX_BUILD_DIR) /
                                                "lib/ImporterSynthex.bundle"),
              kind.name, kind.settings)) {
        viewer.resize(kWidth, kHeight);
        viewer.show();
        viewer.SetClip(mClip, QString::fromLatin1(kind.name), false);
        WaitForFrame(0);
    }

    void WaitForFrame(std::int64_t frame) {
        QEventLoop loop;
        const auto connection = QObject::connect(&viewer, &Viewer::FrameShown, &loop, [&](qint64 shown) {
            if (shown == frame) loop.quit();
        });
        loop.exec();
        QObject::disconnect(connection);
    }

    std::int64_t Frames() const { return mClip->Info().frames; }

    Viewer viewer;

  private:
    std::shared_ptr<const corvane::Clip> mClip;
};

void Seek(benchmark::State& state, const Kind& kind) {
    Window window(kind);
    std::vector<double> times;
    std::int64_t frame = 0;
    for (auto _ : state) {
        frame = (frame + 39119) % window.Frames(); // has no factor in common with the number of frames
        const auto start = Clock::now();
        window.viewer.SetCurrentFrame(frame);
        window.WaitForFrame(frame);
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::ranges::sort(times);
    state.counters["median_ms"] = times[times.size() / 2];
    state.counters["worst_ms"] = times.back();
}

void Play(benchmark::State& state, const Kind& kind) {
    Window window(kind);
    std::int64_t shown = 0;
    QObject::connect(&window.viewer, &Viewer::FrameShown, &window.viewer, [&](qint64) { ++shown; });
    for (auto _ : state) {
        QEventLoop loop;
        QTimer::singleShot(std::chrono::seconds(gSeconds), Qt::PreciseTimer, &loop, &QEventLoop::quit);
        window.viewer.Play();
        loop.exec();
        window.viewer.Pause();
    }
    state.counters["shown"] = static_cast<double>(shown);
    state.counters["dropped"] = static_cast<double>(window.viewer.DroppedFrames());
}

void Register() {
    for (const Kind& kind : kKinds) {
        benchmark::RegisterBenchmark((std::string("Seek/") + kind.name).c_str(),
                                     [&kind](benchmark::State& state) { Seek(state, kind); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(kSeeks)
            ->UseRealTime();
        benchmark::RegisterBenchmark((std::string("Play/") + kind.name).c_str(),
                                     [&kind](benchmark::State& state) { Play(state, kind); })
            ->Unit(benchmark::kSecond)
            ->Iterations(1)
            ->UseRealTime();
    }
}

/// Takes our own option out.
void ReadSeconds(int& argc, char** argv) {
    constexpr std::string_view kOption = "--seconds=";
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.starts_with(kOption))
            gSeconds = std::max(std::atoi(argv[i] + kOption.size()), 1);
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
}

} // namespace

int main(int argc, char** argv) {
    ReadSeconds(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    if (!corvane::WhyNoDisplay().empty()) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::AddCustomContext("platform", QGuiApplication::platformName().toStdString());
    Register();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
