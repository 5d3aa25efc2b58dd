#include "ExportText.h"

#include <cmath>
#include <cstdint>

#include <fmt/format.h>

namespace corvane {

std::string BytesText(std::uint64_t bytes) {
    if (bytes < 1000) return fmt::format("{} bytes", bytes);
    const double thousands = static_cast<double>(bytes) / 1000;
    if (bytes < 1000'000) return fmt::format("{:.1f} kB", thousands);
    if (bytes < 1000'000'000) return fmt::format("{:.1f} MB", thousands / 1000);
    return fmt::format("{:.2f} GB", thousands / 1000'000);
}

std::string WaitText(double seconds) {
    const auto whole = std::llround(seconds);
    if (whole < 60) return fmt::format("{} s", whole);
    if (whole < 3600) return fmt::format("{} min {:02} s", whole / 60, whole % 60);
    return fmt::format("{} h {:02} min", whole / 3600, whole / 60 % 60);
}

} // namespace corvane
