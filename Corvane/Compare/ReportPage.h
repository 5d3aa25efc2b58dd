#pragma once

#include <filesystem>
#include <string>

#include "Comparison.h"

namespace corvane {

/// A page of HTML that tells all of a report, with its pictures inside: findings, a timeline, the worst
/// pictures beside their frames, and the colors of their rows as curves. Throws `Failure` if the clip's
/// frames can't be made or converted, and `std::bad_alloc`. Any thread.
std::string ReportPage(const Clip& clip, const CompareReport& report);

} // namespace corvane
