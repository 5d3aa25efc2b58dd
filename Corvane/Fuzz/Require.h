#pragma once

#include <cstdint>
#include <cstdlib>

/// One run with the bytes of the fuzzer, which also declares it; each target defines it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// What has to hold for any bytes: ends the process if it does not, which is a finding.
inline void Require(bool holds) {
    if (!holds) std::abort();
}
