#include "Placement.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "Engine/ClipText.h"
#include "NumberCell.h"

namespace corvane {
namespace {

// Formats of standard definition disagree about the shape of pixels by up to 2.5 %: 16:15 or 12:11, 8:9 or
// 10:11.
constexpr double kUsualDistortion = 0.03;

// Sides of a picture that was turned back, as sides of the picture: left, top, right, bottom.
std::array<double, 4> TurnSides(std::array<double, 4> sides, const Orientation& orientation) {
    if (orientation.mirrored) std::swap(sides[0], sides[2]);
    if (orientation.flipped) std::swap(sides[1], sides[3]);
    std::rotate(sides.begin(), sides.end() - orientation.quarterTurns, sides.end());
    return sides;
}

std::array<double, 4> TurnSidesBack(std::array<double, 4> sides, const Orientation& orientation) {
    std::rotate(sides.begin(), sides.begin() + orientation.quarterTurns, sides.end());
    if (orientation.mirrored) std::swap(sides[0], sides[2]);
    if (orientation.flipped) std::swap(sides[1], sides[3]);
    return sides;
}

// "8 pixels at the left, 2 at the right", of sides that are at least half a pixel.
std::string NameSides(const std::array<double, 4>& sides) {
    constexpr std::array<const char*, 4> kNames{"left", "top", "right", "bottom"};
    std::string text;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::int64_t pixels = std::lround(sides[i]);
        if (pixels <= 0) continue;
        text += text.empty() ? CountText(pixels, "pixel") : fmt::format(", {}", pixels);
        text += fmt::format(" at the {}", kNames[i]);
    }
    return text;
}

bool Any(const std::array<double, 4>& sides) {
    return std::ranges::any_of(sides, [](double side) { return side >= 0.75; });
}

std::string SizeText(double width, double height) {
    return fmt::format("{}x{}", std::lround(width), std::lround(height));
}

// Of pixels that are free at the sides of frames.
Finding PadFinding(const std::array<double, 4>& padded) {
    const bool sides = padded[0] + padded[2] > 0.75;
    const bool ends = padded[1] + padded[3] > 0.75;
    const std::string cause = sides && ends ? "bars all around" : sides ? "pillarbox" : "letterbox";
    const std::string found = NameSides(padded);
    return {"geometry.pad",
            fmt::format("Frames are padded ({}) by {}.", cause, found),
            {},
            "no bars",
            found,
            cause,
            0.5};
}

/// Frames of size `before` have pixels of another aspect than they are `shown` with: `drawn`. They are scaled
/// to the size `after`, or not at all if it is empty.
Finding DistortionFinding(const std::string& before, const std::string& after, double shown, double drawn) {
    const std::string expected = fmt::format("{:.4f}", drawn), found = fmt::format("{:.4f}", shown);
    if (after.empty())
        return {"tags.aspect",
                fmt::format("The video says that its pixel aspect is {}; the clip's, which is drawn, is {}.",
                            found, expected),
                {},
                expected,
                found,
                {},
                0.5,
                {drawn, shown}};
    return {"geometry.aspect",
            fmt::format("Frames of {} are scaled to {} and shown with a pixel aspect of {}; {} would show "
                        "them undistorted.",
                        before, after, found, expected),
            {},
            expected,
            found,
            "scaled without keeping the aspect",
            0.6};
}

} // namespace

double AspectOf(const PixelAspect& aspect) {
    return aspect.numerator == 0 || aspect.denominator == 0
               ? 1
               : static_cast<double>(aspect.numerator) / aspect.denominator;
}

PlacementFinder::PlacementFinder(const ClipFormat& clip, const VideoFacts& video)
    : mClip(clip), mVideo(video) {}

void PlacementFinder::Add(const Box& active, const std::optional<NumberPlace>& number) {
    mActiveBefore = mActive;
    if (!mActive) mActive = active;
    mActive = Box{std::min(mActive->left, active.left), std::min(mActive->top, active.top),
                  std::max(mActive->right, active.right), std::max(mActive->bottom, active.bottom)};
    if (!number) return;
    // Some numbers look alike from both sides: the place that is found later is the right one.
    if (number->orientation != mOrientation) {
        mOrientation = number->orientation;
        mNumbers = 0;
        mSums = {};
    }
    ++mNumbers;
    const std::array place{number->left, number->top, number->scaleX, number->scaleY, number->contrast};
    for (std::size_t i = 0; i < place.size(); ++i) mSums[i] += place[i];
}

Size PlacementFinder::Upright() const {
    const Size& size = mVideo.size;
    return mOrientation.quarterTurns % 2 == 0 ? size : Size{size.height, size.width};
}

// Bars at the sides of the picture, turned back.
PlacementFinder::Margins PlacementFinder::Bars() const {
    if (!mActive) return {};
    const auto pixels = [](std::uint32_t count) { return static_cast<double>(count); };
    return TurnSidesBack({pixels(mActive->left), pixels(mActive->top),
                          pixels(mVideo.size.width - mActive->right),
                          pixels(mVideo.size.height - mActive->bottom)},
                         mOrientation);
}

/// The rows that were measured, turned back.
PlacementFinder::Axis PlacementFinder::SettleRows() const {
    const double height = mRows->scale * mClip.size.height;
    return {mOrientation.flipped ? Upright().height - mRows->start - height : mRows->start, mRows->scale};
}

/// The columns of frames that don't tell where they lie. If they fill the picture they were scaled; pixels
/// have another shape then, unless rows were scaled likewise. If the video says that they haven't, columns
/// are missing rather, nobody knows at which side.
PlacementFinder::Axis PlacementFinder::SettleColumns(const Axis& filling) const {
    constexpr double kExactly = 1e-3;
    if (!mVideo.aspect || std::abs(AspectOf(*mVideo.aspect) / AspectOf(mClip.aspect) - 1) > kExactly)
        return filling;
    const double scale = Settle(true).scale;
    const double missing = mClip.size.width * (scale - filling.scale);
    if (missing < 1.5 || scale > 2 * filling.scale) return filling;
    return {filling.start - missing / 2, scale};
}

// The simplest place of the frame on one axis that agrees with where numbers are: it fills the picture, or
// what bars leave free, or was moved by whole pixels; else where they are.
PlacementFinder::Axis PlacementFinder::Settle(bool vertical) const {
    const Margins bars = Bars();
    const double length = vertical ? Upright().height : Upright().width;
    const double frame = vertical ? mClip.size.height : mClip.size.width;
    const double begin = bars[vertical ? 1 : 0];
    const Axis filling{begin, (length - begin - bars[vertical ? 3 : 2]) / frame};
    if (mNumbers == 0) return vertical ? (mRows ? SettleRows() : filling) : SettleColumns(filling);
    const Axis found{mSums[vertical ? 1 : 0] / static_cast<double>(mNumbers),
                     mSums[vertical ? 3 : 2] / static_cast<double>(mNumbers)};
    const raster::PrintLayout layout = FrameNumberLayout(mClip.size, 2);
    const auto first = static_cast<double>(vertical ? layout.glyphs.top : layout.glyphs.left);
    const auto last = static_cast<double>(vertical ? layout.glyphs.bottom : layout.glyphs.right);
    // What the place of an edge was off at most, at the lowest quality of coding that numbers were read at.
    // Levels that were cut make strokes thicker or thinner.
    constexpr double kCut = 0.6;
    const bool isCut = mSums[4] < kCut * static_cast<double>(mNumbers);
    const double tolerance = std::max(0.5, 0.012 * layout.glyphHeight * found.scale) * (isCut ? 3 : 1);
    const auto isNear = [&](double at, const Axis& axis) {
        return std::abs(axis.start + at * axis.scale - found.start - at * found.scale) < tolerance;
    };
    const Axis moved{std::round(found.start + first * (found.scale - 1)), 1};
    const Axis whole{0, length / frame};
    for (const Axis& axis : {whole, filling, moved})
        if (isNear(first, axis) && isNear(last, axis)) return axis;
    return found;
}

Placement PlacementFinder::Get() const {
    const Axis x = Settle(false);
    const Axis y = Settle(true);
    const Size upright = Upright();
    const double right = upright.width - x.start - x.scale * mClip.size.width;
    const double bottom = upright.height - y.start - y.scale * mClip.size.height;
    const Margins sides = TurnSides({x.start, y.start, right, bottom}, mOrientation);
    Placement placement{.left = sides[0],
                        .top = sides[1],
                        .width = mVideo.size.width - sides[0] - sides[2],
                        .height = mVideo.size.height - sides[1] - sides[3],
                        .mirrored = mOrientation.mirrored,
                        .flipped = mOrientation.flipped,
                        .quarterTurns = mOrientation.quarterTurns,
                        .active = {}};
    placement.active = mActive.value_or(Box{0, 0, mVideo.size.width, mVideo.size.height});
    return placement;
}

std::vector<Finding> PlacementFinder::Findings() const {
    std::vector<Finding> findings;
    if (!mActive) return findings;
    AddTurned(findings);
    AddScaled(findings);
    AddMoved(findings);
    return findings;
}

void PlacementFinder::AddTurned(std::vector<Finding>& findings) const {
    if (mOrientation.quarterTurns != 0) {
        const std::string found =
            fmt::format("{} degrees clockwise{}", 90 * mOrientation.quarterTurns,
                        mOrientation.mirrored || mOrientation.flipped ? ", and mirrored" : "");
        findings.push_back({"geometry.rotate",
                            fmt::format("Pictures are turned by {}.", found),
                            {},
                            "upright",
                            found,
                            {},
                            0.85});
    } else if (!mOrientation.IsPlain()) {
        const std::string found =
            mOrientation.mirrored ? "left and right are exchanged" : "top and bottom are exchanged";
        findings.push_back({"geometry.mirror",
                            fmt::format("Pictures are mirrored: {}.", found),
                            {},
                            "not mirrored",
                            found,
                            {},
                            0.85});
    }
}

void PlacementFinder::AddScaled(std::vector<Finding>& findings) const {
    const Axis x = Settle(false);
    const Axis y = Settle(true);
    const double width = x.scale * mClip.size.width;
    const double height = y.scale * mClip.size.height;
    const bool isScaled =
        std::abs(width - mClip.size.width) >= 0.75 || std::abs(height - mClip.size.height) >= 0.75;
    const double drawn = AspectOf(mClip.aspect) * y.scale / x.scale; // the shape that pixels should have now
    const double told = mVideo.aspect ? AspectOf(*mVideo.aspect) : drawn;
    const double shown = mOrientation.quarterTurns % 2 == 0 ? told : 1 / told;
    const std::string before = SizeText(mClip.size.width, mClip.size.height);
    if (std::abs(shown / drawn - 1) > kUsualDistortion)
        findings.push_back(DistortionFinding(before, isScaled ? SizeText(width, height) : "", shown, drawn));
    else if (isScaled) {
        const bool toSquare = std::abs(AspectOf(mClip.aspect) - 1) > kUsualDistortion &&
                              std::abs(drawn - 1) <= kUsualDistortion;
        findings.push_back({"geometry.size",
                            fmt::format("Frames are scaled from {} to {}{}.", before, SizeText(width, height),
                                        toSquare ? " to have square pixels" : ""),
                            {},
                            before,
                            SizeText(width, height),
                            toSquare ? "scaled to square pixels" : "",
                            0.5});
    }
}

// By one line, fields are moved from even rows to odd ones and back: that is how their order is changed.
Finding PlacementFinder::ShiftFinding(const Margins& padded) const {
    const std::string found = NameSides(padded);
    const double lines = padded[1] + padded[3];
    if (mClip.Interlaced() && mOrientation.quarterTurns % 2 == 0 && padded[0] + padded[2] < 0.75 &&
        std::lround(lines) == 1)
        return {"fields.shifted",
                fmt::format("Pictures are shifted {} by one line, so that the fields change places.",
                            padded[1] > padded[3] ? "down" : "up"),
                {},
                "in place",
                found,
                "the order of the fields was changed",
                0.7};
    return {"geometry.shift",
            fmt::format("Frames are shifted, and leave {} free.", found),
            {},
            "in place",
            found,
            {},
            0.6};
}

Finding PlacementFinder::CropFinding(const Margins& cropped) const {
    std::string found = NameSides(cropped), cause;
    if (mNumbers == 0 && cropped[0] + cropped[2] > 0) {
        found = CountText(std::lround(cropped[0] + cropped[2]), "column");
        const std::string ends = NameSides({0, cropped[1], 0, cropped[3]});
        if (!ends.empty()) found = fmt::format("{}, and by {}", ends, found);
        cause = "the video says that pixels kept their shape";
    }
    return {"geometry.crop",
            fmt::format("Frames are cropped by {}{}{}.", found, cause.empty() ? "" : ": ", cause),
            {},
            "whole frames",
            found,
            cause,
            0.6};
}

// Crop, padding, and both at opposite sides, which is a shift.
void PlacementFinder::AddMoved(std::vector<Finding>& findings) const {
    const Placement placement = Get();
    const Margins bars = TurnSides(Bars(), mOrientation);
    const double right = mVideo.size.width - placement.left - placement.width;
    const double bottom = mVideo.size.height - placement.top - placement.height;
    const Margins free{placement.left, placement.top, right, bottom};
    Margins cropped{};
    Margins padded{};
    for (std::size_t i = 0; i < 4; ++i) {
        // What the frame leaves free is padding even if it looks like the frame; what it lies beyond is lost.
        padded[i] = std::max(free[i], bars[i]);
        const bool isWidth = (i + static_cast<std::size_t>(placement.quarterTurns)) % 2 == 0;
        cropped[i] = std::max(bars[i] - free[i], 0.0) / Settle(!isWidth).scale;
        if (bars[i] > 0 && cropped[i] < 1.5) cropped[i] = 0; // the edge of a bar is not that sharp
    }
    const auto isShift = [&](std::size_t side) {
        return std::abs(padded[side] - cropped[side ^ 2]) < 1.5 &&
               std::abs(padded[side ^ 2] - cropped[side]) < 1.5;
    };
    if (Any(padded) && Any(cropped) && isShift(0) && isShift(1)) {
        findings.push_back(ShiftFinding(padded));
        return;
    }
    if (Any(cropped)) findings.push_back(CropFinding(cropped));
    if (Any(padded)) findings.push_back(PadFinding(padded));
}

std::vector<std::string> PlacementFinder::Remarks() const {
    std::vector<std::string> remarks;
    if (mActive && mNumbers == 0)
        remarks.emplace_back(
            "No number was read, so that of geometry only the size and bars could be looked at.");
    return remarks;
}

} // namespace corvane
