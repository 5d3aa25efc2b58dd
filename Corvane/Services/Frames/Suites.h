#pragma once

#include <cstdint>

#include "CvPluginAPI.h"

namespace corvane {

// What the host hands to plug-ins. All of it lives as long as the process. Any thread; nothing here fails.

/// What the functions of suites return.
inline constexpr std::int32_t kSuiteSucceeded = 0;
inline constexpr std::int32_t kSuiteFailed = -1;

/// "Corvane Legacy Suite", version 1.
const CvLegacySuite1* LegacySuite1();
/// "Corvane Legacy Suite", version 2.
const CvLegacySuite2* LegacySuite2();

/// The basic suite: hands out the host's suites by name and version.
const CvBasicSuite* BasicSuite();

/// The host's memory functions.
const CvMemoryFunctions* MemoryFunctions();

/// The standard parameters of every call of this process's plug-ins.
imStdParms* StandardParameters();

/// The size in bytes that was asked for a block of the memory functions, which must not have been freed.
std::uint32_t HostBlockSize(const void* block);

} // namespace corvane
