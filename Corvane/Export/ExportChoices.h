#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "Export.h"
#include "Export/Targets/ExportKinds.h"

namespace corvane {

// What the window does with the rows of `ExportKinds.h`. Any thread.

/// The options for exporting in this way, without output and frames. Fails only for want of memory.
ExportOptions OptionsFor(const ExportChoice& choice);
/// Puts settings into options that `OptionsFor` gave for a choice of H.264; else it has the defaults.
void SetH264(ExportOptions& options, const H264Settings& h264);

/// What a proposed name ends with: ".mp4", or for pictures ".%05d.png".
std::string EndingOf(const ExportChoice& choice);

/// A name without a folder for an export of the clip of this name: free of characters that no file name can
/// hold, at most 200 bytes before its ending.
std::string ProposedFileName(const std::string& clipName, const ExportChoice& choice);

/// The path with what the choice needs: its suffix, and for pictures a number. Throws `UsageFailure` for a
/// name that has two numbers or another percent sign.
std::filesystem::path CompletedPath(const std::filesystem::path& path, const ExportChoice& choice);

/// The first file that the export would replace (for pictures, the one with the lowest number), if any.
/// `frames` is the range, both included. Reads the folder once; a folder that can't be read holds no files.
std::optional<std::filesystem::path> FindReplaced(const std::filesystem::path& output,
                                                  const ExportChoice& choice,
                                                  std::pair<std::int64_t, std::int64_t> frames);

} // namespace corvane
