#pragma once

#include <filesystem>

namespace corvane {

/// The path of `name` in the folder `../lib` from the program's own: where the build tree, like the installed
/// one, has the modules and bundles that the program loads. It need not exist. Any thread.
std::filesystem::path InLibraryFolder(const std::filesystem::path& name);

} // namespace corvane
