#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ColorSamples.h"
#include "Engine/Clip.h"
#include "Finding.h"
#include "FrameReading.h"
#include "PictureErrors.h"
#include "Placement.h"
#include "Video.h"

namespace corvane {

/// How a clip and a video are to be compared.
struct CompareOptions {
    double tolerance = 2;             ///< what a color may be off, in steps of 8 bits
    std::optional<FrameRange> frames; ///< the frames of the clip that the video should show; all if empty
    std::set<std::string> ignored;    ///< kinds of findings ("color.depth"), or their first words ("color")
    /// Told which frames each picture shows, in order, on a thread of the comparison's; may be empty.
    std::function<void(const FrameReading& reading)> onReading;
};

/// A picture of the video beside the frame of the clip that it shows.
struct ComparedPicture {
    std::int64_t picture = 0;          ///< counted from 0
    std::optional<std::int64_t> frame; ///< if it shows none, the one that is due; none if none is
    VideoPicture pixels;
    double meanSquare = 0; ///< of the errors of all samples, as shares of the largest code value
};

/// The first picture of each kind that findings are about; none if there is no such picture.
struct ExamplePictures {
    std::optional<ComparedPicture> usual;     ///< shows a frame of the clip
    std::optional<ComparedPicture> twoFrames; ///< shows another frame in its odd rows than in its even ones
    std::optional<ComparedPicture> foreign;   ///< shows no frame of the clip
    std::optional<ComparedPicture> otherSize; ///< has not the size of those before it
};

/// Which frame a picture shows.
struct ShownFrame {
    std::int64_t picture = 0;
    std::optional<std::int64_t> frame; ///< none if it shows none, or that can't be told
    std::optional<std::int64_t> time;  ///< when it is shown, in the video's units of time
};

/// What was found.
struct CompareReport {
    std::string clip; ///< its name
    VideoFacts video;
    std::int64_t framesCompared = 0; ///< pictures of the video that were looked at
    std::int64_t framesMatched = 0;  ///< those that show a frame of the clip
    PlanarFormat format;             ///< of its first picture
    std::array<PlaneErrors, 4> errors;
    Placement placement;
    std::vector<Finding> findings;      ///< the worst first
    std::vector<ComparedPicture> worst; ///< those that are furthest off, the worst first; a few
    ExamplePictures examples;
    std::vector<ShownFrame> timeline; ///< of pictures at even distances, up to some thousands
    std::vector<ColorSample> colors;  ///< of rows of pictures at even distances, in the pictures' order
    /// Sentences about what could not be looked at, and why ("Its frames are alike, so that ...").
    std::vector<std::string> remarks;
    bool cancelled = false; ///< the report holds for the pictures until then
};

/// Takes note of how many pictures were compared, and of how many there are as far as is known (else 0).
using CompareProgress = std::function<void(std::int64_t done, std::int64_t total)>;

/// Compares a video with the clip that it was made from, picture by picture; memory grows by a bit a frame
/// and with what is wrong. Ends early if `cancel` becomes true. Throws `Failure` if the clip can't be
/// rendered or nothing of the video can be decoded, and `std::bad_alloc`. Any thread; frames and pictures are
/// made on some more.
CompareReport CompareClip(const Clip& clip, Video& video, const CompareOptions& options,
                          const CompareProgress& progress, const std::atomic<bool>& cancel);

} // namespace corvane
