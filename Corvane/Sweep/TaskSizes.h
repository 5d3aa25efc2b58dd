#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "Engine/Bundle.h"
#include "Family.h"

namespace corvane {

/// First and last member of a task, both included.
using TaskRange = std::pair<std::int64_t, std::int64_t>;

/// Divides members, which are numbers in order, into tasks that take about `seconds` each on one processor,
/// or longer if they would be too many. Tries some frames of a member of each codec first, to see what it
/// takes. Members between those of a task are in its range, too. Any thread.
std::vector<TaskRange> DivideIntoTasks(const Family& family, const std::vector<std::int64_t>& members,
                                       const std::shared_ptr<Bundle>& bundle, double seconds);

} // namespace corvane
