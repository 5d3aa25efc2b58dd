#pragma once

#include <filesystem>
#include <string>

namespace corvane {

/// The text of the file at `path`. Throws `Failure`, whose sentence names the file and says why, if there is
/// none, if it is a folder, a pipe or a device, if it has more than 64 MiB, or if it may not be read. Any
/// thread.
std::string ReadTextFile(const std::filesystem::path& path);

/// Makes `text` all that is in the file at `path`, as `AtomicFile` replaces files: never half of it. Throws
/// `Failure`, whose sentence names the file and says why, and that nothing was changed; also if the text is
/// too long to be read again. Any thread.
void WriteTextFile(const std::filesystem::path& path, const std::string& text);

} // namespace corvane
