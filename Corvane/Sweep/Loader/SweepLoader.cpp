#include "SweepLoader.h"

#include "Engine/LoadedModule.h"

namespace corvane {

const SweepModule& LoadSweepModule() {
    void* const function =
        FindInModule({"corvane-sweep", "making families", "install it and its libraries"}, kSweepModuleName);
    return *reinterpret_cast<SweepModuleFunction*>(function)();
}

} // namespace corvane
