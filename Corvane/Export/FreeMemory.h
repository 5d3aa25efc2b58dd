#pragma once

#include <cstdint>

namespace corvane {

/// How many bytes of memory this process can still take without driving others out: what the system has left,
/// what the control groups of the process leave it, and what its own limit of address space does. Any thread;
/// what can't be found out does not bound it.
std::uint64_t FreeMemory();

} // namespace corvane
