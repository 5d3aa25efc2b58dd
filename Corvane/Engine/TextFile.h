#pragma once

#include <filesystem>
#include <string>

#include <sys/types.h>

namespace corvane {

/// The text of the file at `path`. Throws `Failure`, whose sentence names the file and says why, if there is
/// none, if it is a folder, a pipe or a device, if it has more than 64 MiB, or if it may not be read. Any
/// thread.
std::string ReadTextFile(const std::filesystem::path& path);

/// The text that comes from standard input until that ends. Throws `Failure`, also if it has more than 64
/// MiB. One thread.
std::string ReadTextInput();

/// Makes `text` all that is in the file at `path`, as `AtomicFile` replaces files: never half of it. A new
/// file gets the permissions `mode`, as far as the process gives them. Returns what could not be kept of an
/// older file, as a clause, or nothing. Throws `Failure`, whose sentence names the file and says why, what
/// can be done, and that nothing was changed; also if the text is too long to be read again. Any thread.
[[nodiscard]] std::string WriteTextFile(const std::filesystem::path& path, const std::string& text,
                                        mode_t mode = 0666);

/// How a path is written in a file that is in `folder`: relative to it if `path` lies in it or below it, else
/// as it is, as always for an empty folder. Any thread.
std::filesystem::path StoredPath(const std::filesystem::path& path, const std::filesystem::path& folder);

} // namespace corvane
