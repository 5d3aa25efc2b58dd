#pragma once

#include <string>

namespace corvane {

/// Says why no window can be shown, in half a sentence; empty where one can. Qt can't be asked: it ends the
/// process where it finds no display.
///
/// The environment decides as it does for Qt: QT_QPA_PLATFORM, where it names something else than X11 or
/// Wayland, is taken at its word; otherwise WAYLAND_DISPLAY or DISPLAY must lead to a server that answers.
std::string WhyNoDisplay();

} // namespace corvane
