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
    /// A container's name as a file's suffix or as libav calls it.
    std::string kind;
    /// NAME[:option=value[:option=value...]]; empty: the container's default here.
    std::string codec;
    StreamFacts facts;
};

/// The name of the one function of the module, of type `MakeLibavTargetFunction`.
inline constexpr const char* kMakeLibavTargetName = "CorvaneMakeLibavTarget";
using MakeLibavTargetFunction = Target*(const LibavRequest& request);

/// Makes a target by the module that knows libav, loading it first: linking libav costs every start of the
/// program 100 ms and more. The module is `../lib/corvane/corvane-libav.so` from the program's folder. Throws
/// `Failure` where it is missing or does not load, and what making the target throws.
std::unique_ptr<Target> MakeLibavTarget(const LibavRequest& request);

} // namespace corvane
