#pragma once

namespace corvane {

/// How a picture was mirrored and turned: first left and right, and top and bottom were exchanged, then it
/// was turned clockwise. Flipped in both ways is the same as two quarter turns, which is how it is told.
struct Orientation {
    bool mirrored = false; ///< left and right exchanged
    bool flipped = false;  ///< top and bottom exchanged
    int quarterTurns = 0;  ///< clockwise, 0 to 3

    bool IsPlain() const { return *this == Orientation{}; }
    bool operator==(const Orientation&) const = default;
};

} // namespace corvane
