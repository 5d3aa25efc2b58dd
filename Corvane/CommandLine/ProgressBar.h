#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace corvane::commandline {

/// A line on a terminal that tells how far a render is: a bar, frames, frames a second, time left. Shown on
/// standard error, and only if that is a terminal; the line is wiped when the object is destroyed. One thread
/// at a time; never fails.
class ProgressBar {
  public:
    /// `wanted`: whether to show it at all.
    explicit ProgressBar(bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Takes note that `done` of `total` frames are finished. Draws a few times a second.
    void Update(std::int64_t done, std::int64_t total);

  private:
    using Clock = std::chrono::steady_clock;

    bool mShown;
    Clock::time_point mStart;
    Clock::time_point mNextDraw;
};

/// The line for `done` of `total` frames after `seconds`.
std::string ProgressLine(std::int64_t done, std::int64_t total, double seconds);

} // namespace corvane::commandline
