#pragma once

#include "Export/Picture/RowScan.h"

namespace corvane {

/// Where a clip's frames lie in the pictures of a video. First the frame is mirrored, then turned clockwise,
/// then scaled and shifted so that it fills the rectangle `left`, `top`, `width`, `height`, in pixels of the
/// picture; what sticks out was cropped, and what the rectangle leaves free is padding.
struct Placement {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    bool mirrored = false; ///< left and right exchanged
    bool flipped = false;  ///< top and bottom exchanged
    int quarterTurns = 0;  ///< clockwise, 0 to 3
    Box active;            ///< the pixels of the picture that show the clip rather than padding

    /// Whether rows of the picture are the rows of the clip, each at its place: nothing was scaled, moved,
    /// mirrored or turned.
    bool IsPlain() const {
        return left == 0 && top == 0 && !mirrored && !flipped && quarterTurns == 0 &&
               width == active.Width() && height == active.Height() && active.left == 0 && active.top == 0;
    }
};

} // namespace corvane
