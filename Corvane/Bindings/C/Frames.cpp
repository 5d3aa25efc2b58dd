#include <algorithm>

#include "Calls.h"
#include "Handles.h"
#include "Services/Raster/PixelFormats.h"

using namespace corvane;
using bindings::Call;
using bindings::Given;
using bindings::Opened;

namespace {

std::uint8_t ColorOf(RK_PixelFormat raster) {
    if ((raster & kRK_YCbCr) != 0)
        return (raster & kRK_709) != 0 ? CORVANE_COLOR_YCBCR_709 : CORVANE_COLOR_YCBCR_601;
    return (raster & kRK_Linear) != 0 ? CORVANE_COLOR_RGB_LINEAR : CORVANE_COLOR_RGB;
}

std::uint8_t AlphaOf(RK_PixelFormat raster) {
    if ((raster & kRK_AlphaIgnored) != 0) return CORVANE_ALPHA_IGNORED;
    return (raster & kRK_Premultiplied) != 0 ? CORVANE_ALPHA_PREMULTIPLIED : CORVANE_ALPHA_STRAIGHT;
}

corvane_pixel_format DescriptionOf(const PixelFormatRow& row) {
    corvane_pixel_format full{};
    full.code = row.code;
    full.name = ShortName(row).data();
    if (!IsConcrete(row.raster)) return full;
    std::ranges::copy(ComponentLetters(row.raster), full.components);
    full.bytes_per_component = static_cast<uint8_t>(BytesPerComponent(row.raster));
    full.color = ColorOf(row.raster);
    full.alpha = AlphaOf(row.raster);
    return full;
}

} // namespace

size_t corvane_pixel_format_count(void) {
    return PixelFormatTable().size();
}

int corvane_pixel_format_at(size_t index, corvane_pixel_format* format) {
    return Call(-1, [&] {
        const auto table = PixelFormatTable();
        if (index >= table.size())
            throw UsageFailure(
                fmt::format("There is no pixel format {}; there are {}.", index, table.size()));
        bindings::Hand(DescriptionOf(table[index]), Given(format, "corvane_pixel_format_at", "the format"));
        return 0;
    });
}

int corvane_pixel_format_of(uint32_t code, corvane_pixel_format* format) {
    return Call(-1, [&] {
        const PixelFormatRow* const row = FindPixelFormat(code);
        if (row == nullptr)
            throw UsageFailure(fmt::format("The host has no pixel format {}.", PixelFormatHex(code)));
        bindings::Hand(DescriptionOf(*row), Given(format, "corvane_pixel_format_of", "the format"));
        return 0;
    });
}

corvane_frame* corvane_clip_get_frame(const corvane_clip* clip, int64_t index) {
    return Call<corvane_frame*>(nullptr, [&] {
        const auto& given = Opened(clip, "corvane_clip_get_frame", "the clip");
        return new corvane_frame{given.clip->GetFrame(index)};
    });
}

void corvane_frame_release(corvane_frame* frame) {
    delete frame;
}

int corvane_frame_get_info(const corvane_frame* frame, corvane_frame_info* info) {
    return Call(-1, [&] {
        const char* const function = "corvane_frame_get_info";
        const Frame& given = Opened(frame, function, "the frame").frame;
        const FrameView& view = given.View();
        corvane_frame_info full{};
        full.format = given.Format();
        full.planes = 1;
        // The frame's memory is the caller's alone; the engine only reads it.
        full.plane[0] = {.data = const_cast<std::byte*>(view.pixels),
                         .row_bytes = view.rowBytes,
                         .width = view.width,
                         .height = view.height,
                         .bytes_per_pixel = BytesPerPixel(view.format)};
        bindings::Hand(full, Given(info, function, "the info"));
        return 0;
    });
}
