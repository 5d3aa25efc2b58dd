#pragma once

#include <QColor>
#include <QIcon>
#include <QSize>

#include "lumui.h"

namespace corvane::desktop {

/// A color as Qt can show it: components are held to 0 to 1, what is no number is 0.
QColor ShownColor(const lumui::controls::ColorRGBA& color);

/// The room that a swatch has on its right, to the title beside it, which some styles put very close.
inline constexpr int kSwatchGap = 4;

/// A picture of a color in a thin frame, over a checkerboard as far as the color is clear, and the gap.
/// `size` is that of the color in device-independent pixels, of which one has `ratio` x `ratio` real ones.
QIcon MakeSwatch(const lumui::controls::ColorRGBA& color, QSize size, qreal ratio);

} // namespace corvane::desktop
