#pragma once

#include <QColor>
#include <QIcon>
#include <QSize>

#include "lumui.h"

namespace corvane::desktop {

/// A color as Qt can show it: components are held to 0 to 1, and what is not a number is 0. Any thread.
QColor ShownColor(const lumui::controls::ColorRGBA& color);

/// The room to the right of a swatch, because some styles put the title very close to it.
inline constexpr int kSwatchGap = 4;

/// A picture of a color in a thin frame, over a checkerboard as far as the color is clear, with the gap
/// beside it. `size` is that of the color in device-independent pixels, each of which has `ratio` x `ratio`
/// real ones. UI thread.
QIcon MakeSwatch(const lumui::controls::ColorRGBA& color, QSize size, qreal ratio);

} // namespace corvane::desktop
