#include "Desktop/Loader/DesktopModule.h"
#include "Desktop/Toolkit/QtPlatform.h"
#include "DesktopRun.h"

extern "C" [[gnu::visibility("default")]] corvane::UI_Platform*
CorvaneCreateDesktopPlatform(const corvane::DesktopOptions& options) {
    return new corvane::desktop::QtPlatform(options);
}

extern "C" [[gnu::visibility("default")]] int
CorvaneRunMainWindow(const corvane::DesktopOptions& desktop, const corvane::MainWindowOptions& options) {
    return corvane::desktop::RunDesktop(desktop, options);
}
