#include "LibraryFolder.h"

#include <dlfcn.h>

namespace corvane {

std::filesystem::path InLibraryFolder(const std::filesystem::path& name) {
    static const std::filesystem::path sFolder = [] {
        Dl_info library{};
        std::error_code error;
        if (::dladdr(reinterpret_cast<const void*>(&InLibraryFolder), &library) == 0)
            return std::filesystem::path();
        return std::filesystem::canonical(library.dli_fname, error).parent_path();
    }();
    return sFolder / name;
}

} // namespace corvane
