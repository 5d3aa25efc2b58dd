#pragma once

#include <cstdint>

#include "CvPluginAPI.h"

namespace corvane {

/// "Corvane Legacy Suite", versions 1 and 2.
const CvLegacySuite1* LegacySuite1();
const CvLegacySuite2* LegacySuite2();

/// The basic suite: hands out the host's suites by name and version.
const CvBasicSuite* BasicSuite();

/// The host's memory functions.
const CvMemoryFunctions* MemoryFunctions();

/// The standard parameters of every call of this process's plug-ins.
imStdParms* StandardParameters();

/// For tests of what happens when a suite can't be had: `AcquireSuite` fails, and stores null, while `refuse`
/// is not null and returns true for the suite. Any thread.
using SuiteRefusal = bool (*)(const char* name, std::int32_t version);
void SetSuiteRefusal(SuiteRefusal refuse);

/// Blocks handed out by the memory functions and not freed yet. Any thread.
std::int64_t HostBlocksInUse();

/// The size in bytes that was asked for a block of the memory functions. Any thread.
std::uint32_t HostBlockSize(const void* block);

} // namespace corvane
