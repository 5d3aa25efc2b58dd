#pragma once

namespace corvane {

/// How many processors this process may use; at least one. Any thread.
unsigned Processors();

} // namespace corvane
