// One preferences request with its dialog: layout read and parsed, controls bound, values set, dialog closed.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include "Engine/Bundle.h"
#include "Engine/Records.h"
#include "Services/Frames/Suites.h"
#include "Services/TestHooks.h"
#include "Services/UI/ScriptedPlatform.h"

namespace {

constexpr int kGrowthRuns = 10000;
/// In bytes: a few pages of stack. One lost object in each run would take hundreds of kilobytes.
constexpr double kGrowthAllowed = 64 << 10;

/// Sends the request for a clip without a file and works the dialog by `script`. Returns the result.
int Request(const corvane::Bundle& bundle, const corvane::DialogScript& script) {
    corvane::ScriptedPlatform platform(script);
    const corvane::ScopedPlatform scope(platform);
    static char sBuffer[kPrefsBufferSize];
    std::strcpy(sBuffer, "{}");
    auto access = corvane::HostRecord<imFileAccessRec8>();
    access.mFilePath = u"/none";
    auto record = corvane::HostRecord<imGetPrefsRec>();
    record.mPrefs = sBuffer;
    record.mFirstTime = 0;
    return bundle.Call(kSelector_GetPrefs, &access, &record).result;
}

corvane::DialogScript Cancel() {
    corvane::DialogScript script;
    script.cancel = true;
    return script;
}

corvane::DialogScript Edits() {
    corvane::DialogScript script;
    for (const char* const action :
         {"frameWidthID=1920", "colorRenderingTypePopupID=1", "chooseColorPopupID=2", "chooseColorButtonID0",
          "frameRatePopupID=PAL - 25 fps"})
        script.actions.push_back(corvane::ScriptedAction::Parse(action));
    script.answers.push_back(corvane::ScriptedAnswer::Parse("color=0.5,0.25,0.125,1"));
    return script;
}

/// Memory of the process's own; pages of files, which come as code is first used, are not counted.
std::int64_t ResidentBytes() {
    std::ifstream status("/proc/self/statm");
    std::int64_t size = 0, resident = 0, shared = 0;
    status >> size >> resident >> shared;
    return (resident - shared) * ::sysconf(_SC_PAGESIZE);
}

void DialogOpen(benchmark::State& state) {
    const corvane::Bundle bundle(SYNTHEX_BUILD_DIR "/lib/ImporterSynthex.bundle");
    for (auto _ : state)
        if (Request(bundle, Cancel()) != kResult_Cancelled) state.SkipWithError("the dialog did not open");
}
BENCHMARK(DialogOpen)->Unit(benchmark::kMicrosecond);

/// Memory after 10,000 dialogs, against the same process after the first 100.
void DialogGrowth(benchmark::State& state) {
    const corvane::Bundle bundle(SYNTHEX_BUILD_DIR "/lib/ImporterSynthex.bundle");
    const auto run = [&](int times) {
        for (int i = 0; i < times; ++i)
            if (Request(bundle, Edits()) != kResult_Success) state.SkipWithError("the edit failed");
    };
    for (auto _ : state) {
        run(100);
        const std::int64_t resident = ResidentBytes();
        const auto allocated = static_cast<std::int64_t>(::mallinfo2().uordblks);
        run(kGrowthRuns);
        state.counters["allocated_growth"] =
            static_cast<double>(static_cast<std::int64_t>(::mallinfo2().uordblks) - allocated);
        state.counters["resident_growth"] = static_cast<double>(ResidentBytes() - resident);
        state.counters["live_nodes"] = static_cast<double>(corvane::CountLiveNodes());
        state.counters["host_blocks"] = static_cast<double>(corvane::HostBlocksInUse());
    }
    for (const auto& [name, counter] : state.counters) {
        const double allowed = name == "resident_growth" ? kGrowthAllowed : 0;
        if (counter.value > allowed) state.SkipWithError((name + " is too large").c_str());
    }
}
BENCHMARK(DialogGrowth)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
