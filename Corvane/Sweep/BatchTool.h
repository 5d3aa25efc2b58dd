#pragma once

#include <string>
#include <vector>

namespace corvane {

/// What a program of a batch system answered.
struct ToolAnswer {
    std::string program;
    int status = 0; ///< exit status; 128 plus the signal's number if one ended it
    std::string said = {};
    std::string errors = {}; ///< what it said on standard error

    /// What it said first, as a clause: why it refuses, if it does.
    std::string Reason() const;
};

/// Runs a program that is looked for on PATH, and waits for it. `words` are its name and its arguments.
/// Throws `Failure`, which names the remedy, if there is none. Any thread.
ToolAnswer RunTool(const std::vector<std::string>& words);

} // namespace corvane
