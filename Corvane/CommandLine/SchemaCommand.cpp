#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Console.h"
#include "Engine/ProjectFile.h"
#include "Engine/SettingsCheck.h"
#include "Sweep/Loader/SweepLoader.h"

namespace corvane::commandline {

int RunSchema(const SchemaRequest& request) {
    if (request.kind == "clip")
        Print(SettingsSchema().dump(2));
    else if (request.kind == "project")
        Print(ProjectSchema().dump(2));
    else
        Print(LoadSweepModule().Schema());
    Print("\n");
    return kExitDone;
}

} // namespace corvane::commandline
