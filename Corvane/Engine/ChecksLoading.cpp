#include <algorithm>
#include <fstream>
#include <string>

#include <unistd.h>

#include <fmt/format.h>

#include "CheckedRecord.h"
#include "ChecksShared.h"
#include "PluginLibrary.h"

namespace corvane {

namespace {

/// What a process holds that repeated loading must not add to.
struct Holdings {
    std::uint64_t heap = 0;    ///< bytes in use
    std::int64_t mappings = 0; ///< of files, in the address space
    std::int64_t files = 0;    ///< open descriptors

    static Holdings Now() {
        Holdings holdings;
        holdings.heap = HeapInUse();
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);)
            holdings.mappings += line.find(" /") != std::string::npos;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            ++holdings.files;
        return holdings;
    }
};

} // namespace

void CheckLoads(CheckRun& run) {
    run.Doing("loading the bundle");
    const PluginLibrary library(run.BundlePath());
}

void CheckEntry(CheckRun& run) {
    const PluginLibrary library(run.BundlePath());
    if (!library.HasEntry()) run.Fail(fmt::format("the executable exports no {}", kCvImportEntryName));
}

void CheckInit(CheckRun& run) {
    const PluginLibrary library(run.BundlePath());
    CheckedRecord<imImportInfoRec> record;
    record.Arm();
    run.Doing("initialising");
    run.Expect("the result", library.Call(kSelector_Init, record.Get(), nullptr).result,
               +kResult_Initialized);
    for (const std::int32_t capability :
         {record->mCapability28, record->mCapability32, record->mCapability36, record->mCapability44,
          record->mCapability52, record->mCapability60})
        run.Expect("a capability", capability, 1);
    run.FailIf(record.Touched(
        {CV_RECORD_FIELD(imImportInfoRec, mCapability28), CV_RECORD_FIELD(imImportInfoRec, mCapability32),
         CV_RECORD_FIELD(imImportInfoRec, mCapability36), CV_RECORD_FIELD(imImportInfoRec, mCapability44),
         CV_RECORD_FIELD(imImportInfoRec, mCapability52), CV_RECORD_FIELD(imImportInfoRec, mCapability60)}));
    run.Doing("shutting down");
    library.Call(kSelector_Shutdown, nullptr, nullptr);
}

void CheckShutdown(CheckRun& run) {
    std::filesystem::path executable;
    {
        const PluginLibrary library(run.BundlePath());
        executable = library.Executable();
        run.Doing("shutting down what was never initialised");
        run.Expect("the result", library.Call(kSelector_Shutdown, nullptr, nullptr).result, +kResult_Success);
        imImportInfoRec record{};
        library.Call(kSelector_Init, &record, nullptr);
        for (const char* const what : {"shutting down", "shutting down a second time"}) {
            run.Doing(what);
            run.Expect("the result", library.Call(kSelector_Shutdown, nullptr, nullptr).result,
                       +kResult_Success);
        }
        run.Doing("unloading the bundle");
    }
    if (PluginLibrary::Unloads() && PluginLibrary::IsLoaded(executable))
        run.Fail("the executable stays in memory");
}

void CheckReload(CheckRun& run) {
    // The first rounds fill caches of the host and of the system's loader. What is lost in every round is a
    // block of at least the smallest size.
    constexpr std::uint64_t kSmallestBlock = 32;
    constexpr int kWarmUp = 100;
    constexpr int kRounds = 100;
    const std::string settings = CheckSettings().Text();
    Holdings before;
    for (int round = 0; round < kWarmUp + kRounds; ++round) {
        if (round == kWarmUp) before = Holdings::Now();
        run.Doing(fmt::format("loading for time {}", round + 1));
        const Bundle bundle(run.BundlePath());
        const CheckedInstance instance(bundle, settings);
    }
    const Holdings after = Holdings::Now();
    run.Expect("the number of mapped files", after.mappings, before.mappings);
    run.Expect("the number of open files", after.files, before.files);
    if (after.heap >= before.heap + kRounds * kSmallestBlock)
        run.Fail(fmt::format("{} bytes more are in use after {} rounds", after.heap - before.heap, kRounds));
}

} // namespace corvane
