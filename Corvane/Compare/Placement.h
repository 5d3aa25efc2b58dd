#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Export/Picture/RowScan.h"
#include "Finding.h"
#include "GradientKeys.h"
#include "NumberReader.h"
#include "Orientation.h"
#include "Video.h"

namespace corvane {

/// The width of a pixel over its height; 1 if it isn't told. Any thread.
double AspectOf(const PixelAspect& aspect);

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

    /// Whether the frame's top is at the bottom.
    bool IsUpsideDown() const { return flipped != (quarterTurns == 2); }

    /// Whether rows of the picture are the rows of the clip, each at its place: nothing was scaled, moved,
    /// mirrored or turned.
    bool IsPlain() const {
        return left == 0 && top == 0 && !mirrored && !flipped && quarterTurns == 0 &&
               width == active.Width() && height == active.Height() && active.left == 0 && active.top == 0;
    }
};

/// Finds the pixels of a picture that are not bars: rows at its top and bottom and columns at its sides that
/// are one color, unlike what they enclose. The whole picture if there are none. Throws `std::bad_alloc`. Any
/// thread.
Box FindActive(const VideoPicture& picture);

/// Collects where the frame lies, picture by picture. One thread at a time.
class PlacementFinder {
  public:
    /// For frames of a clip in pictures of a video. Throws `std::bad_alloc`.
    PlacementFinder(const ClipFormat& clip, const VideoFacts& video);

    /// Takes what `FindActive` found in a picture, and where its number lies, if one was read. Throws
    /// `std::bad_alloc`.
    void Add(const Box& active, const std::optional<NumberPlace>& number);

    /// Takes back the bars of the last picture, which is none of the clip's.
    void Withdraw() { mActive = mActiveBefore; }

    /// Takes what is known of how frames are turned if they have no numbers.
    void Turn(const Orientation& orientation) { mOrientation = orientation; }

    /// Takes where the rows of frames without numbers lie, from the picture's top, if that is known.
    void SetRows(const std::optional<RowAxis>& rows) { mRows = rows; }

    /// Where frames lie by all that was added; until then, as if they filled the picture.
    Placement Get() const;

    /// geometry.size, aspect, crop, pad, shift, mirror and rotate. Throws `std::bad_alloc`.
    std::vector<Finding> Findings() const;

    /// What could not be told, and why. Throws `std::bad_alloc`.
    std::vector<std::string> Remarks() const;

  private:
    /// One axis of the turned back picture: where the frame begins, and by how much it is scaled.
    struct Axis {
        double start = 0;
        double scale = 1;
    };
    /// Pixels at the sides of something: left, top, right, bottom.
    using Margins = std::array<double, 4>;

    Size Upright() const;
    Margins Bars() const;
    Axis SettleRows() const;
    Axis SettleColumns(const Axis& filling) const;
    Axis Settle(bool vertical) const;
    void AddTurned(std::vector<Finding>& findings) const;
    void AddScaled(std::vector<Finding>& findings) const;
    Finding CropFinding(const Margins& cropped) const;
    Finding ShiftFinding(const Margins& padded) const;
    void AddMoved(std::vector<Finding>& findings) const;

    const ClipFormat mClip;
    const VideoFacts mVideo;
    std::optional<Box> mActive;       // all that was ever active
    std::optional<Box> mActiveBefore; // without the last picture
    std::optional<RowAxis> mRows;
    Orientation mOrientation; // of the places that are summed up
    std::int64_t mNumbers = 0;
    std::array<double, 5> mSums{}; // of left, top, scaleX, scaleY, contrast
};

} // namespace corvane
