#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "Engine/FramePlace.h"
#include "Engine/NumberPair.h"
#include "Replacing.h"

// Forms that options of several subcommands have. Main thread.
namespace corvane::commandline {

/// Frames per second that are usual; a shell offers them.
inline constexpr const char* kUsualRates[] = {"24000/1001", "24", "25",  "30000/1001",  "30", "50",
                                              "60000/1001", "60", "100", "120000/1001", "120"};

/// The kinds of files that have a schema, the usual one first.
inline constexpr const char* kSchemaKinds[] = {"clip", "project", "sweep"};

/// Adds an option that takes two numbers in one argument. `take` gets them, and may refuse them by false; the
/// sentence that refuses something else tells what is expected.
template <class Take>
void AddPair(CLI::App& command, const char* name, const char* typeName, const char* about,
             const PairForm& form, const std::string& expected, Take take) {
    const auto read = [=](const std::string& text) {
        const std::optional<NumberPair> pair = ReadPair(text, form);
        if (!pair || !take(pair->first, pair->second))
            throw CLI::ValidationError(name, "'" + text + "' is not understood; write " + expected);
    };
    command.add_option_function<std::string>(name, read, about)->type_name(typeName);
}

/// Adds an option that takes a first and a last number, which `take` gets.
template <class Take>
void AddRange(CLI::App& command, const char* name, const char* about, Take take) {
    AddPair(command, name, "FIRST:LAST", about, {':', 0, std::numeric_limits<std::int64_t>::max(), true},
            "FIRST:LAST (both included, from 0) or one number",
            [take](std::int64_t first, std::optional<std::int64_t> last) {
                take(first, last.value_or(first));
                return first <= last.value_or(first);
            });
}

/// Adds an option that takes frames of a clip, by numbers or times.
inline void AddFrames(CLI::App& command, const char* about, std::optional<FrameSpan>& frames) {
    const auto read = [&frames](const std::string& text) {
        frames = ReadFrameSpan(text);
        if (!frames)
            throw CLI::ValidationError("--frames",
                                       "'" + text + "' is not understood; write " + kFrameSpanForms);
    };
    command.add_option_function<std::string>("--frames", read, about)->type_name("FIRST:LAST");
}

/// Adds `-y` and `-n`, which say what becomes of files that exist.
inline void AddReplacing(CLI::App& command, Replacing& replacing, const char* names, const char* about) {
    CLI::Option* const yes = command.add_flag_function(
        names, [&replacing](std::int64_t) { replacing = Replacing::kYes; }, about);
    command
        .add_flag_function(
            "-n,--keep", [&replacing](std::int64_t) { replacing = Replacing::kNo; },
            "Keep files that exist, and fail")
        ->excludes(yes);
}

/// Adds an option that takes a number. A range holds whatever is neither below nor above it: what is no
/// number, too, which is refused here.
template <class Take>
CLI::Option* AddNumber(CLI::App& command, const char* name, const char* about, CLI::Range range, Take take) {
    const auto read = [name, take](double number) {
        if (std::isnan(number)) throw CLI::ValidationError(name, "'nan' is no number");
        take(number);
    };
    return command.add_option_function<double>(name, read, about)->check(range);
}

} // namespace corvane::commandline
