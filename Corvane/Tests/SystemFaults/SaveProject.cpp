// Saves a project as the window does, for script/faults.
//   save_project FILE
#include <cstdio>
#include <exception>

#include "Engine/ProjectFile.h"

int main(int, char** arguments) try {
    corvane::Project project;
    project.Add("clip", {.file = {}, .settings = "{}"});
    std::puts(corvane::SaveProject(project, arguments[1]).c_str());
} catch (const std::exception& exception) {
    std::fprintf(stderr, "%s.\n", exception.what());
    return 1;
}
