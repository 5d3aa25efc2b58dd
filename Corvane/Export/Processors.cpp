#include "Processors.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <thread>

#include <sched.h>

namespace corvane {
namespace {

unsigned AllowedProcessors() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
        return static_cast<unsigned>(CPU_COUNT(&allowed));
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace

unsigned Processors() {
    const unsigned allowed = AllowedProcessors();
    const char* const word = std::getenv("SLURM_CPUS_ON_NODE");
    const std::string_view text = word == nullptr ? "" : word;
    unsigned ofJob = 0;
    std::from_chars(text.data(), text.data() + text.size(), ofJob);
    return ofJob == 0 ? allowed : std::min(allowed, ofJob);
}

} // namespace corvane
