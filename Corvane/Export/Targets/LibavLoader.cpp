#include "LibavLoader.h"

#include <dlfcn.h>

#include <fmt/format.h>

#include "ExportKinds.h"
#include "Services/Foundation/ProgramFolder.h"

namespace corvane {
namespace {

// The module stays loaded: libav keeps tables that it can't free.
MakeLibavTargetFunction* LoadModule(const std::string& kind) {
    const std::filesystem::path module = InLibraryFolder("corvane/corvane-libav.so");
    void* const library = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw Failure(fmt::format("{} can't be loaded, which writing {} needs: {}; install it and its "
                                  "libraries, or choose {}",
                                  module.string(), kind, dlerror(), ListKinds(false)));
    void* const function = dlsym(library, kMakeLibavTargetName);
    if (function == nullptr)
        throw Failure(
            fmt::format("{} is not the export module of this program; install both anew", module.string()));
    return reinterpret_cast<MakeLibavTargetFunction*>(function);
}

} // namespace

std::unique_ptr<Target> MakeLibavTarget(const LibavRequest& request) {
    return std::unique_ptr<Target>(LoadModule(request.kind)(request));
}

} // namespace corvane
