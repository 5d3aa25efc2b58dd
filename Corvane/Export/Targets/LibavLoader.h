#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "Export/Picture/StreamFacts.h"
#include "Target.h"

namespace corvane {

/// What to write by libav.
struct LibavRequest {
    std::filesystem::path output;
    /// A container, by the suffix of its files or by libav's name.
    std::string kind;
    /// NAME[:option=value[:option=value...]]; empty: the container's default.
    std::string codec;
    StreamFacts facts;
};

/// The name of the function of the module that makes targets, which is of type `MakeLibavTargetFunction`.
inline constexpr const char* kMakeLibavTargetName = "CorvaneMakeLibavTarget";
/// Makes a target that the caller owns. Throws as `MakeLibavTarget` does.
using MakeLibavTargetFunction = Target*(const LibavRequest& request);

/// Makes a target by the module that knows libav, which is loaded first: linking it costs 100 ms and more.
/// Throws `Failure` as `FindInModule` does or if the target can't be made, and `UsageFailure` for a
/// container, codec or option that there is not. Any thread.
std::unique_ptr<Target> MakeLibavTarget(const LibavRequest& request);

} // namespace corvane
