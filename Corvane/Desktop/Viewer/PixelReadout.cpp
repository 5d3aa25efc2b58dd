#include "PixelReadout.h"

#include <array>
#include <cstring>

#include <fmt/format.h>

#include "Export/Picture/PackedReader.h"

namespace corvane::desktop {

namespace {

std::string Components(const std::byte* pixel, RK_PixelFormat format) {
    std::string words;
    const std::array<char, 4> letters = ComponentLetters(format);
    for (std::size_t i = 0; i < letters.size(); ++i) {
        if (i != 0) words += ' ';
        if (format & kRK_Float) {
            float value;
            std::memcpy(&value, pixel + i * sizeof value, sizeof value);
            words += fmt::format("{} {}", letters[i], value);
        } else {
            words += fmt::format("{} {}", letters[i], std::to_integer<int>(pixel[i]));
        }
    }
    return words;
}

std::string RGB(const Clip& clip, const FrameView& pixel) {
    StreamFacts facts = FactsOf(clip, 1);
    facts.size = {1, 1};
    PackedReader reader(facts, {{0, 1, 2, 3}, 3, 8, false});
    reader.Begin(pixel);
    std::byte rgb[3];
    reader.Read(0, 1, rgb);
    const auto part = [&](int i) { return std::to_integer<int>(rgb[i]); };
    return fmt::format("{} {} {}", part(0), part(1), part(2));
}

} // namespace

PixelWords DescribePixel(const Clip& clip, const Frame& frame, std::uint32_t x, std::uint32_t y) {
    FrameView pixel = frame.View();
    pixel.pixels = frame.View().At(x, y);
    pixel.width = pixel.height = 1;
    return {Components(pixel.pixels, pixel.format), PixelFormatWords(frame.Format()), RGB(clip, pixel)};
}

} // namespace corvane::desktop
