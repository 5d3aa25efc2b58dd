#include "QtPlatform.h"

extern "C" [[gnu::visibility("default")]] corvane::UI_Platform*
CorvaneCreateDesktopPlatform(const corvane::DesktopOptions& options) {
    return new corvane::desktop::QtPlatform(options);
}
