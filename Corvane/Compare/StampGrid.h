#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "Video.h"

namespace corvane {

/// When pictures are shown, against a steady rate. One thread at a time; all of it throws `std::bad_alloc`.
class StampGrid {
  public:
    /// `unitsPerFrame` is how many units of the video's time a frame of the clip should last.
    explicit StampGrid(double unitsPerFrame) : mUnitsPerFrame(unitsPerFrame) {}

    /// Takes the next picture: its time, and by how many frames the clip went on, if that is known.
    void Add(const std::optional<std::int64_t>& time, const std::optional<std::int64_t>& frames);

    /// Whether pictures have times at all.
    bool HasTimes() const { return mTimes > 1; }
    std::int64_t Unstamped() const { return mUnstamped; }
    /// How many units of time a picture lasts, by those that follow a steady rate; 0 if there are none.
    double PictureLength() const;
    /// By how much that may be off.
    double Uncertainty() const;
    /// Pictures whose times are off the grid by more than the rounding to units, and by how many units at
    /// most.
    std::pair<std::int64_t, double> Irregular() const;
    /// From the first picture's time to the end of the last one.
    double Length() const { return static_cast<double>(mLast - mFirst) + PictureLength(); }
    double UnitsPerFrame() const { return mUnitsPerFrame; }

  private:
    std::int64_t Usual() const;
    std::pair<double, std::int64_t> Mean(double least, double most) const;

    const double mUnitsPerFrame;
    std::map<std::pair<std::int64_t, std::int64_t>, std::int64_t>
        mSteps; // how many go on by frames and by units
    std::int64_t mTimes = 0;
    std::int64_t mUnstamped = 0;
    std::int64_t mFirst = 0;
    std::int64_t mLast = 0;
};

} // namespace corvane
