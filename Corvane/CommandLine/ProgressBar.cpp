#include "ProgressBar.h"

#include <cstdio>

#include <unistd.h>

#include <fmt/format.h>

#include "Export/ExportText.h"
#include "Services/Foundation/QuotedText.h"

namespace corvane::commandline {

namespace {

constexpr std::chrono::milliseconds kDrawEvery(100);
constexpr int kBarWidth = 24;
constexpr std::size_t kMostColumns = 79; // of a terminal that is narrow
constexpr char kWipeLine[] = "\r\x1b[K";

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
    Wipe();
}

void ProgressBar::Update(std::int64_t done, std::int64_t total) {
    if (mShown && (Clock::now() >= mNextDraw || done >= total))
        Draw(ProgressLine(done, total, std::chrono::duration<double>(Clock::now() - mStart).count()));
}

void ProgressBar::Update(std::string_view doing) {
    if (mShown && Clock::now() >= mNextDraw) Draw(Quoted(doing).substr(0, kMostColumns));
}

void ProgressBar::Wipe() {
    if (mDrawn) std::fputs(kWipeLine, stderr);
    mDrawn = false;
}

void ProgressBar::Draw(const std::string& line) {
    std::fputs((kWipeLine + line).c_str(), stderr);
    mDrawn = true;
    mNextDraw = Clock::now() + kDrawEvery;
}

} // namespace corvane::commandline
