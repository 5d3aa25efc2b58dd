#pragma once

#include <string>

namespace corvane {

/// Says why no window can be shown, in half a sentence; empty if one can. Qt can't be asked: it ends the
/// process if it finds no display.
///
/// The environment decides, as it does for Qt: if QT_QPA_PLATFORM names something other than X11 or Wayland,
/// it is taken at its word; otherwise WAYLAND_DISPLAY or DISPLAY must lead to a server that answers. Any
/// thread, as long as no other one changes the environment.
std::string WhyNoDisplay();

} // namespace corvane
