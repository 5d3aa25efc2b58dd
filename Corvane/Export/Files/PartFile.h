#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "OutputFile.h"

namespace corvane {

/// What people are told of a part of an export that can't be joined to the others. Any thread.
Failure PartFailure(const std::filesystem::path& part, const std::string& reason);

/// Appends the frames of a part to `output`: all of its bytes but `header`, with which it must begin. Returns
/// false as soon as `cancel` is set. Throws `Failure` if it can't be read, begins with something else or does
/// not hold `bytes` behind that, and as `OutputFile::Write` does.
bool AppendPart(const std::filesystem::path& part, std::span<const std::byte> header, std::uint64_t bytes,
                OutputFile& output, const std::atomic<bool>& cancel);

} // namespace corvane
