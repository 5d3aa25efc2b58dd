#include "Suites.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "FrameBuffers.h"
#include "Services/TestHooks.h"

namespace corvane {

namespace {

std::atomic<SuiteRefusal> gRefusal{nullptr};
std::atomic<std::int64_t> gBlocks{0};

struct SuiteRow {
    const char* name;
    std::int32_t version;
    const void* suite;
};

std::int32_t AcquireSuite(const char* name, std::int32_t version, const void** suite) {
    static const SuiteRow kSuites[] = {
        {kCvLegacySuite, kCvLegacySuiteVersion1, LegacySuite1()},
        {kCvLegacySuite, kCvLegacySuiteVersion2, LegacySuite2()},
        {kCvVexelCreator2Suite, kCvVexelCreator2SuiteVersion, VexelCreator2Suite()},
        {kCvVexelSuite, kCvVexelSuiteVersion, VexelSuite()},
        {kCvPixelFormatSuite, kCvPixelFormatSuiteVersion, PixelFormatSuite()},
    };
    if (suite == nullptr) return -1;
    *suite = nullptr;
    const SuiteRefusal refuse = gRefusal.load();
    if (name == nullptr || (refuse != nullptr && refuse(name, version))) return -1;
    for (const SuiteRow& row : kSuites) {
        if (row.version != version || std::strcmp(row.name, name) != 0) continue;
        *suite = row.suite;
        return 0;
    }
    return -1;
}

/// The host's suites live as long as the process: there is nothing to give back.
std::int32_t ReleaseSuite(const char*, std::int32_t) {
    return 0;
}

/// In front of every block, so that the host knows its size.
struct alignas(std::max_align_t) BlockHeader {
    std::uint32_t size;
};

void* AllocateBlock(std::uint32_t size) {
    auto* const header = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
    if (header == nullptr) return nullptr;
    header->size = size;
    ++gBlocks;
    return header + 1;
}

void FreeBlock(void* block) {
    if (block == nullptr) return;
    --gBlocks;
    std::free(static_cast<BlockHeader*>(block) - 1);
}

} // namespace

const CvBasicSuite* BasicSuite() {
    static constexpr CvBasicSuite suite{AcquireSuite, ReleaseSuite};
    return &suite;
}

const CvMemoryFunctions* MemoryFunctions() {
    static constexpr CvMemoryFunctions functions{AllocateBlock, FreeBlock};
    return &functions;
}

imStdParms* StandardParameters() {
    static imStdParms parameters{kCvImporterAPIVersion, 0, BasicSuite(), MemoryFunctions()};
    return &parameters;
}

void SetSuiteRefusal(SuiteRefusal refuse) {
    gRefusal = refuse;
}

std::int64_t HostBlocksInUse() {
    return gBlocks;
}

std::uint32_t HostBlockSize(const void* block) {
    return (static_cast<const BlockHeader*>(block) - 1)->size;
}

} // namespace corvane
