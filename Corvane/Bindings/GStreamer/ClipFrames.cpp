#include "ClipFrames.h"

#include <cstring>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane::gstreamer {

namespace {

using handles::Empty;

template <class Object>
Object Made(Object object) {
    if (!object) throw Failure(corvane_last_error());
    return object;
}

void Require(int result) {
    if (result != 0) throw Failure(corvane_last_error());
}

handles::Clip Open(const corvane_importer* importer, const ClipName& name) {
    const char* const title = name.title.empty() ? "settings" : name.title.c_str();
    if (!name.settings.empty() || !name.title.empty())
        return handles::Clip(corvane_clip_open_text(importer, title, name.settings.c_str()));
    if (name.location.empty()) throw Failure("There is no clip to show; set the property location.");
    return handles::Clip(corvane_clip_open_file(importer, name.location.c_str()));
}

// The order of the components in memory, of those whose memory can be handed on.
constexpr struct {
    std::string_view components;
    GstVideoFormat format;
} kLayouts[] = {{"BGRA", GST_VIDEO_FORMAT_BGRA}, {"BGRX", GST_VIDEO_FORMAT_BGRx},
                {"ARGB", GST_VIDEO_FORMAT_ARGB}, {"XRGB", GST_VIDEO_FORMAT_xRGB},
                {"VUYA", GST_VIDEO_FORMAT_VUYA}, {"VUYX", GST_VIDEO_FORMAT_VUYA}};

} // namespace

ClipFrames::ClipFrames(const ClipName& name)
    : mImporter(Made(
          handles::Importer(corvane_importer_load(name.bundle.empty() ? nullptr : name.bundle.c_str())))),
      mClip(Made(Open(mImporter.get(), name))) {
    auto info = Empty<corvane_clip_info>();
    Require(corvane_clip_get_info(mClip.get(), &info));
    // Says why, if there are no frames.
    handles::Frame first = Made(handles::Frame(corvane_clip_get_frame(mClip.get(), 0)));
    auto delivered = Empty<corvane_pixel_format>();
    Require(corvane_pixel_format_of(info.delivered_format, &delivered));
    ChooseFormat(delivered);
    DescribeVideo(info);
}

void ClipFrames::ChooseFormat(const corvane_pixel_format& delivered) {
    mWay = Way::kConverted;
    mFormat = GST_VIDEO_FORMAT_RGBA64_LE;
    if (delivered.bytes_per_component != 1 || delivered.alpha == CORVANE_ALPHA_PREMULTIPLIED) return;
    for (const auto& layout : kLayouts) {
        if (layout.components != delivered.components) continue;
        mFormat = layout.format;
        mWay = layout.components == "VUYX" ? Way::kOpaque : Way::kWrapped;
    }
}

void ClipFrames::DescribeVideo(const corvane_clip_info& info) {
    mFacts.size = {info.width, info.height};
    mFacts.aspect = Reduced(PixelAspect{info.aspect_numerator, info.aspect_denominator});
    mFacts.rate = Reduced(Rate{info.rate_numerator, info.rate_denominator});
    mFacts.order = static_cast<FieldOrder>(info.field_order);
    mFacts.raster = RasterFormatOf(info.delivered_format);
    mFacts.frames = info.frames;
    mFacts.tags = TagsFor(mFacts);

    const auto mode =
        mFacts.Interlaced() ? GST_VIDEO_INTERLACE_MODE_INTERLEAVED : GST_VIDEO_INTERLACE_MODE_PROGRESSIVE;
    if (!gst_video_info_set_interlaced_format(&mVideo, mFormat, mode, info.width, info.height))
        throw Failure(fmt::format("GStreamer has no pictures of {} x {} pixels.", info.width, info.height));
    mVideo.fps_n = static_cast<int>(mFacts.rate.scale);
    mVideo.fps_d = static_cast<int>(mFacts.rate.sampleSize);
    mVideo.par_n = static_cast<int>(mFacts.aspect.numerator);
    mVideo.par_d = static_cast<int>(mFacts.aspect.denominator);
    if (mFacts.order == FieldOrder::kUpperFirst)
        GST_VIDEO_INFO_FIELD_ORDER(&mVideo) = GST_VIDEO_FIELD_ORDER_TOP_FIELD_FIRST;
    if (mFacts.order == FieldOrder::kLowerFirst)
        GST_VIDEO_INFO_FIELD_ORDER(&mVideo) = GST_VIDEO_FIELD_ORDER_BOTTOM_FIELD_FIRST;
    const bool yCbCr = mFormat == GST_VIDEO_FORMAT_VUYA;
    const auto code = [](int number) { return static_cast<guint>(number); };
    mVideo.colorimetry = {yCbCr ? GST_VIDEO_COLOR_RANGE_16_235 : GST_VIDEO_COLOR_RANGE_0_255,
                          yCbCr ? gst_video_color_matrix_from_iso(code(mFacts.tags.matrix))
                                : GST_VIDEO_COLOR_MATRIX_RGB,
                          gst_video_transfer_function_from_iso(code(mFacts.tags.transfer)),
                          gst_video_color_primaries_from_iso(code(mFacts.tags.primaries))};
    if (mWay == Way::kConverted)
        mReader = std::make_unique<PackedReader>(
            mFacts, PackedFormat{.order = {0, 1, 2, 3}, .components = 4, .bits = 16});
}

GstClockTime ClipFrames::TimeOf(std::int64_t index) const {
    return gst_util_uint64_scale(static_cast<guint64>(index), GST_SECOND * mFacts.rate.sampleSize,
                                 mFacts.rate.scale);
}

std::int64_t ClipFrames::FrameAt(GstClockTime time) const {
    auto index = static_cast<std::int64_t>(
        gst_util_uint64_scale(time, mFacts.rate.scale, GST_SECOND * mFacts.rate.sampleSize));
    // A frame's time is rounded down to nanoseconds.
    if (TimeOf(index + 1) <= time) ++index;
    return std::min(index, Count());
}

GstBuffer* ClipFrames::Make(std::int64_t index, bool padded) {
    handles::Frame frame = Made(handles::Frame(corvane_clip_get_frame(mClip.get(), index)));
    auto info = Empty<corvane_frame_info>();
    Require(corvane_frame_get_info(frame.get(), &info));
    GstBuffer* const buffer =
        mWay == Way::kWrapped ? Wrap(std::move(frame), info.plane[0], padded) : Copy(info.plane[0]);
    GST_BUFFER_PTS(buffer) = TimeOf(index);
    GST_BUFFER_DURATION(buffer) = TimeOf(index + 1) - TimeOf(index);
    GST_BUFFER_OFFSET(buffer) = static_cast<guint64>(index);
    GST_BUFFER_OFFSET_END(buffer) = static_cast<guint64>(index + 1);
    if (mFacts.Interlaced()) GST_BUFFER_FLAG_SET(buffer, GST_VIDEO_BUFFER_FLAG_INTERLACED);
    if (mFacts.order == FieldOrder::kUpperFirst) GST_BUFFER_FLAG_SET(buffer, GST_VIDEO_BUFFER_FLAG_TFF);
    return buffer;
}

GstBuffer* ClipFrames::Wrap(handles::Frame frame, const corvane_plane& plane, bool padded) const {
    const std::size_t row = std::size_t{plane.width} * plane.bytes_per_pixel;
    const std::size_t size = static_cast<std::size_t>(plane.row_bytes) * (plane.height - 1) + row;
    GstBuffer* const buffer = gst_buffer_new();
    const auto release = [](gpointer owned) { corvane_frame_release(static_cast<corvane_frame*>(owned)); };
    gst_buffer_append_memory(buffer, gst_memory_new_wrapped(GstMemoryFlags{}, plane.data, size, 0, size,
                                                            frame.release(), release));
    if (plane.row_bytes == mVideo.stride[0]) return buffer;
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0};
    gint strides[GST_VIDEO_MAX_PLANES] = {static_cast<gint>(plane.row_bytes)};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, mFormat, plane.width, plane.height, 1,
                                   offsets, strides);
    if (padded) return buffer;
    GstBuffer* const dense = gst_buffer_new_allocate(nullptr, mVideo.size, nullptr);
    for (std::uint32_t y = 0; y < plane.height; ++y)
        gst_buffer_fill(dense, std::size_t{y} * static_cast<std::size_t>(mVideo.stride[0]),
                        static_cast<const std::byte*>(plane.data) +
                            plane.row_bytes * static_cast<std::ptrdiff_t>(y),
                        row);
    gst_buffer_unref(buffer);
    return dense;
}

GstBuffer* ClipFrames::Copy(const corvane_plane& plane) {
    const FrameView view{.pixels = static_cast<const std::byte*>(plane.data),
                         .rowBytes = static_cast<std::int32_t>(plane.row_bytes),
                         .width = plane.width,
                         .height = plane.height,
                         .format = mFacts.raster};
    if (mReader) mReader->Begin(view);
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, mVideo.size, nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    for (std::uint32_t y = 0; y < plane.height; ++y) {
        auto* const out = reinterpret_cast<std::byte*>(map.data) +
                          std::size_t{y} * static_cast<std::size_t>(mVideo.stride[0]);
        if (mReader) {
            mReader->Read(y, plane.width, out);
        } else {
            std::memcpy(out, view.At(0, y), std::size_t{plane.width} * 4);
            for (std::uint32_t x = 0; x < plane.width; ++x) out[std::size_t{x} * 4 + 3] = std::byte{255};
        }
    }
    gst_buffer_unmap(buffer, &map);
    return buffer;
}

} // namespace corvane::gstreamer
