#pragma once

#include <filesystem>
#include <string>

namespace corvane {

/// Reads a whole file of text. Throws `Failure` with the file's name and why, as for a folder, a device or a
/// file over 64 MiB.
std::string ReadTextFile(const std::filesystem::path& path);

/// Writes a file of text so that no half of one can be left: it takes the place of an older one only when all
/// of it is on the disk. A link keeps pointing. Throws `Failure` with the file's name, why, and that nothing
/// was changed.
void WriteTextFile(const std::filesystem::path& path, const std::string& text);

} // namespace corvane
