#pragma once

#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Tests/Process.h"

namespace corvane::testing {

/// Bytes of memory that the process has.
inline long Resident() {
    std::ifstream file("/proc/self/statm");
    long pages = 0, inMemory = 0;
    file >> pages >> inMemory;
    return inMemory * ::sysconf(_SC_PAGESIZE);
}

/// Expects memory not to grow by much while `work` is done many times. It is told how often it was done. A
/// sanitizer keeps what was given back, but tells what was not.
template <class Work>
void ExpectNoGrowth(int times, const Work& work) {
    constexpr long kMost = 8 << 20;
    if (IsSanitized()) times /= 100;
    long before = 0;
    for (int i = 0; i < times; ++i) {
        ASSERT_NO_FATAL_FAILURE(work(i));
        if (i == times / 10) before = Resident();
    }
    EXPECT_TRUE(IsSanitized() || Resident() - before < kMost) << Resident() - before;
}

} // namespace corvane::testing
