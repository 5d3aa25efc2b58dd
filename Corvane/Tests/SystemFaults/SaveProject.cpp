// Saves a project as the window does, for script/faults.
//   save_project FILE
#include <cstdio>
#include <new>

#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"

int main(int, char** arguments) {
    try {
        corvane::Project project;
        project.Add("clip", {.file = {}, .settings = "{}"});
        corvane::SaveProject(project, arguments[1]);
        return 0;
    } catch (const corvane::Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
    } catch (const std::bad_alloc&) {
        std::fputs("There is not enough memory.\n", stderr);
    }
    return 1;
}
