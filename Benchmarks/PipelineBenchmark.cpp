// How an export scales, on any machine: the pipeline with steps that sleep for as long as they would work. So
// many threads render and prepare, one at a time consumes. The counter `of_ideal` is the speed, if that of
// the slower of the two, all threads of the one and the only one of the other, is 1.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "Export/Pipeline.h"

namespace {

using std::chrono::microseconds;

struct Steps {
    const char* name;
    microseconds prepare, consume;
};

/// A target that takes its time.
class SlowTarget final : public corvane::Target {
  public:
    explicit SlowTarget(const Steps& steps) : mSteps(steps) {}

    std::unique_ptr<corvane::Packet> NewPacket() override { return std::make_unique<corvane::Packet>(); }
    void Prepare(const corvane::FrameView&, std::int64_t, corvane::Packet&) override {
        std::this_thread::sleep_for(mSteps.prepare);
    }
    void Consume(corvane::Packet&) override { std::this_thread::sleep_for(mSteps.consume); }
    std::string Finish() override { return {}; }
    std::uint64_t BytesWritten() const override { return 0; }

  private:
    const Steps mSteps;
};

void Run(benchmark::State& state, const Steps& steps, unsigned jobs) {
    const std::int64_t frames = 40 * std::int64_t{jobs};
    const std::atomic<bool> cancel = false;
    SlowTarget target(steps);
    std::chrono::duration<double> time{};
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        corvane::RunPipeline([](std::int64_t) { return corvane::RenderedFrame{}; }, target, 0, frames - 1,
                             jobs, nullptr, cancel);
        time += std::chrono::steady_clock::now() - start;
    }
    const std::chrono::duration<double> ideal =
        std::max<std::chrono::duration<double>>(steps.prepare / double(jobs), steps.consume) *
        double(frames) * double(state.iterations());
    state.counters["of_ideal"] = ideal / time;
}

void RegisterAll() {
    // As measured with 1080p on one core: raw files, PNGs, H.264.
    for (const Steps& steps : {Steps{"raw", microseconds(500), microseconds(1500)},
                               {"png", microseconds(8000), microseconds(100)},
                               {"h264", microseconds(1000), microseconds(4000)}})
        for (const unsigned jobs : {2u, 16u, 64u}) {
            const std::string name = fmt::format("Pipeline/{}/jobs:{}", steps.name, jobs);
            benchmark::RegisterBenchmark(name.c_str(),
                                         [=](benchmark::State& state) { Run(state, steps, jobs); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(3)
                ->UseRealTime();
        }
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
