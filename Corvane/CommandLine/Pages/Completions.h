#pragma once

#include <span>
#include <string>

#include "CommandText.h"

namespace corvane::commandline {

// Scripts by which shells complete the program's arguments, each whole. `commands` are the program and its
// subcommands. Any thread.

/// For bash 4 and newer; needs nothing but the shell.
std::string BashCompletion(std::span<const CommandText> commands);
/// For zsh, as a function of a folder of `fpath`.
std::string ZshCompletion(std::span<const CommandText> commands);
/// For fish 3.
std::string FishCompletion(std::span<const CommandText> commands);

} // namespace corvane::commandline
