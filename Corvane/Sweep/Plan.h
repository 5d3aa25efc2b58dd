#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace corvane {

/// What a family is made of. A value; nothing in it is checked, which `Family` does.
struct Plan {
    /// A setting, and the values that members have of it.
    struct Axis {
        std::string name; ///< of an `AxisRow`
        std::vector<std::string> values;

        bool operator==(const Axis&) const = default;
    };

    std::filesystem::path base;   ///< the settings file that members differ from
    std::vector<Axis> axes;       ///< the last one changes fastest
    bool zip = false;             ///< the first values make the first member and so on; else all combinations
    std::filesystem::path output; ///< what outputs are called, with placeholders such as {rate}
    /// How many parts the one clip of the family is made in, which are joined then; 0: every member is made
    /// in one piece. Read by `SplitClip`.
    std::int64_t split = 0;

    bool operator==(const Plan&) const = default;
};

/// Reads a plan file. Relative paths in it begin at its folder. Throws `Failure`, which names the file and
/// the remedy, if it can't be read, is no plan or is of a newer version. Any thread.
Plan ReadPlan(const std::filesystem::path& file);

/// Saves a plan, whole or not at all. What lies beside or below its folder is written relative to that.
/// Returns what could not be kept of an older file, as a clause, or nothing. Throws `Failure`. Any thread.
[[nodiscard]] std::string SavePlan(const Plan& plan, const std::filesystem::path& file);

/// The JSON schema (draft 2020-12) of plan files, as a text. Any thread.
std::string PlanSchema();

} // namespace corvane
