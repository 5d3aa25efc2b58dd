#pragma once

#include <filesystem>

namespace corvane {

/// The path of `name` in the folder of the library of the host services: where the build tree, like the
/// installed one, has the modules and bundles that are loaded, whatever the program is. It need not exist.
/// Any thread.
std::filesystem::path InLibraryFolder(const std::filesystem::path& name);

} // namespace corvane
