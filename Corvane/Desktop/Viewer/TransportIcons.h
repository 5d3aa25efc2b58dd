#pragma once

#include <QIcon>

namespace corvane::desktop {

/// Pictures for the viewer's buttons and menus.
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

/// An icon that is painted in the text color of the palette there is at the time, at any size.
QIcon MakeTransportIcon(TransportSymbol symbol);

} // namespace corvane::desktop
