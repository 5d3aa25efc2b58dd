#include "ProgressBar.h"

#include <cstdio>

#include <unistd.h>

#include <fmt/format.h>

#include "Export/ExportText.h"

namespace corvane::commandline {

namespace {

constexpr std::chrono::milliseconds kDrawEvery(100);
constexpr int kBarWidth = 24;
constexpr char kWipeLine[] = "\r\x1b[K";

void Draw(const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

std::string ProgressLine(std::int64_t done, std::int64_t total, double seconds) {
    const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
    const auto filled = static_cast<std::size_t>(share * kBarWidth);
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    const double left = rate > 0 ? static_cast<double>(total - done) / rate : 0;
    return fmt::format("[{:<{}}] {}/{} frames, {:.0f} a second, {} left", std::string(filled, '#'), kBarWidth,
                       done, total, rate, WaitText(left));
}

ProgressBar::ProgressBar(bool wanted)
    : mShown(wanted && ::isatty(STDERR_FILENO) != 0), mStart(Clock::now()), mNextDraw(mStart) {}

ProgressBar::~ProgressBar() {
    if (mShown) Draw(kWipeLine);
}

void ProgressBar::Update(std::int64_t done, std::int64_t total) {
    if (!mShown) return;
    const Clock::time_point now = Clock::now();
    if (now < mNextDraw && done < total) return;
    mNextDraw = now + kDrawEvery;
    Draw(kWipeLine + ProgressLine(done, total, std::chrono::duration<double>(now - mStart).count()));
}

} // namespace corvane::commandline
