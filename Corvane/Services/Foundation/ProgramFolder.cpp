#include "ProgramFolder.h"

#include <system_error>

namespace corvane {

std::filesystem::path InLibraryFolder(const std::filesystem::path& name) {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "lib" / name;
}

} // namespace corvane
