#include "LoadedModule.h"

#include <filesystem>

#include <dlfcn.h>

#include <fmt/format.h>

#include "Failure.h"
#include "Services/Foundation/LibraryFolder.h"

namespace corvane {

void* FindInModule(const LoadedModule& module, const char* function) {
    const std::filesystem::path path = InLibraryFolder(fmt::format("corvane/{}.so", module.name));
    // Never unloaded: Qt does not survive that, and libav keeps tables that it can't free.
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        throw Failure(fmt::format("{} can't be loaded, which {} needs: {}; {}", path.string(), module.need,
                                  ::dlerror(), module.remedy));
    void* const found = ::dlsym(library, function);
    if (found == nullptr)
        throw Failure(fmt::format("{} is not of this version: it has no {}; install both anew", path.string(),
                                  function));
    return found;
}

} // namespace corvane
