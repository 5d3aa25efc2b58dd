#pragma once

#include <QIcon>

namespace corvane::desktop {

/// What the pictures on the viewer's buttons and in its menus mean.
enum class TransportSymbol {
    kPlay,
    kPause,
    kPrevious,
    kNext,
    kFirst,
    kLast,
    kLoop,
    kFit,
    kFull,
    kBothFields,
    kUpperField,
    kLowerField
};

/// An icon that is painted at any size, in the text color of the palette at the time. UI thread.
QIcon MakeTransportIcon(TransportSymbol symbol);

} // namespace corvane::desktop
