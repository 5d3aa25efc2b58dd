#include <algorithm>
#include <fstream>
#include <string>

#include <unistd.h>

#include <fmt/format.h>

#include "CheckedRecord.h"
#include "ChecksShared.h"
#include "Engine/PluginLibrary.h"

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
    run.Doing("initializing");
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
        run.Doing("shutting down what was never initialized");
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
    // The first rounds fill caches of the host and of the system's loader, and the allocator's own caches
    // fill and empty at any time. What is lost in every round shows in each half: a block of at least the
    // smallest size.
    constexpr std::uint64_t kSmallestBlock = 32;
    constexpr int kRounds = 100;
    const auto load = [&](int first) {
        for (int round = first; round < first + kRounds; ++round) {
            run.Doing(fmt::format("loading for time {}", round + 1));
            const Bundle bundle(run.BundlePath());
            const CheckedInstance instance(bundle, kCheckSettings);
        }
        return Holdings::Now();
    };
    const Holdings warm = load(0);
    const Holdings middle = load(kRounds);
    const Holdings last = load(2 * kRounds);
    run.Expect("the number of mapped files", last.mappings, warm.mappings);
    run.Expect("the number of open files", last.files, warm.files);
    const auto grows = [](const Holdings& from, const Holdings& to) {
        return to.heap >= from.heap + kRounds * kSmallestBlock;
    };
    if (grows(warm, middle) && grows(middle, last))
        run.Fail(fmt::format("{} bytes more are in use after {} rounds", last.heap - warm.heap, 2 * kRounds));
}

} // namespace corvane
