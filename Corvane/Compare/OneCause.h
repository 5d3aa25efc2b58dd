#pragma once

#include <vector>

#include "Finding.h"

namespace corvane {

/// Takes away findings that only follow from another one: pictures that pulldown or doubling of the rate
/// adds are neither repeated nor shown at a wrong rate. Any thread.
void KeepCauses(std::vector<Finding>& findings);

} // namespace corvane
