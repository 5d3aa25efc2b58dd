#pragma once

#include <span>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Commands.h"

namespace corvane::commandline {

/// Declares what `synthex sweep` can be asked for. `request` outlives `command`. Main thread.
void AddSweepOptions(CLI::App& command, SweepRequest& request);

/// The arguments of the program, of which those behind `--slurm ... --` are options of `--sbatch`. Any
/// thread.
std::vector<std::string> WithBatchOptions(std::span<const char* const> arguments);

} // namespace corvane::commandline
