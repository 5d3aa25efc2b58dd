#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace corvane {

/// What one picture of a video says about which frames of the clip it shows.
struct FrameReading {
    std::int64_t picture = 0;         ///< its number in the video, counted from 0
    std::optional<std::int64_t> time; ///< when it is shown, in the video's units of time
    /// The frame whose upper field (0) and whose lower field (1) the picture's even and odd rows show; both
    /// alike for a progressive picture. None if that can't be read. Gradients can lie between two frames.
    std::array<std::optional<double>, 2> frame;
    double certainty = 0; ///< from 0 to 1
    double margin = 0;    ///< by how many frames it may be off either way; 0 if it was read from a print
    bool foreign = false; ///< the picture is none of the clip's
    /// The picture is a gradient as the clip's are, though of colors that none of its frames has and that
    /// nothing known explains.
    bool miscolored = false;
};

} // namespace corvane
