#pragma once

namespace corvane {

/// How many processors this process may use; at least one. In a job of Slurm these are the job's own, whether
/// or not it is bound to them. Any thread.
unsigned Processors();

} // namespace corvane
