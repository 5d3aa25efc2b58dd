#include "LibavLoader.h"

#include <fmt/format.h>

#include "Engine/LoadedModule.h"
#include "ExportKinds.h"

namespace corvane {

std::unique_ptr<Target> MakeLibavTarget(const LibavRequest& request) {
    const LoadedModule module{"corvane-libav", fmt::format("writing {}", request.kind),
                              fmt::format("install it and its libraries, or choose {}", ListKinds(false))};
    void* const function = FindInModule(module, kMakeLibavTargetName);
    return std::unique_ptr<Target>(reinterpret_cast<MakeLibavTargetFunction*>(function)(request));
}

} // namespace corvane
