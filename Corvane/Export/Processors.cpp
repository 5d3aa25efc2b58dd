#include "Processors.h"

#include <algorithm>
#include <thread>

#include <sched.h>

namespace corvane {

unsigned Processors() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
        return static_cast<unsigned>(CPU_COUNT(&allowed));
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace corvane
