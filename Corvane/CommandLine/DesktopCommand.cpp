#include "Commands.h"
#include "Desktop/Loader/DesktopLoader.h"

namespace corvane::commandline {

int RunDesktop(const DesktopRequest& request) {
    return LoadAndRunMainWindow(
        {.folder = {}, .remedy = "use the other subcommands, which need no window"},
        {.bundle = request.bundle, .files = request.files, .version = SYNTHEX_VERSION, .once = request.once});
}

} // namespace corvane::commandline
