#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::commandline {

/// A line on a terminal that tells how far a long piece of work is. Shown on standard error, and only if that
/// is a terminal; the line is wiped when the object is destroyed. One thread at a time; fails only for want
/// of memory.
class ProgressBar {
  public:
    /// `wanted`: whether to show it at all.
    explicit ProgressBar(bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Takes note that `done` of `total` frames are finished: shows a bar, frames, frames a second, time
    /// left. Draws a few times a second.
    void Update(std::int64_t done, std::int64_t total);
    /// Takes note of what is being done, of which it shows as much as fits. Draws a few times a second.
    void Update(std::string_view doing);
    /// Wipes the line, so that another can be printed.
    void Wipe();

  private:
    using Clock = std::chrono::steady_clock;

    void Draw(const std::string& line);

    bool mShown;
    bool mDrawn = false;
    Clock::time_point mStart;
    Clock::time_point mNextDraw;
};

/// The line for `done` of `total` frames after `seconds`.
std::string ProgressLine(std::int64_t done, std::int64_t total, double seconds);

} // namespace corvane::commandline
