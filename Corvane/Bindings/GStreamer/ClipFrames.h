#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <corvane/engine.h>
#include <corvane/handles.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include "Export/Picture/PackedReader.h"

namespace corvane::gstreamer {

/// What to open.
struct ClipName {
    std::string location; ///< a settings file, unless there is a text
    std::string settings; ///< a settings text
    std::string title;  ///< what sentences call the text, which may be empty then; "settings" if it is empty
    std::string bundle; ///< the plug-in; the installed one if it is empty
};

/// A clip as GStreamer takes it: caps, times and buffers. One thread at a time. Everything that can fail
/// throws `Failure`.
class ClipFrames {
  public:
    explicit ClipFrames(const ClipName& name);

    /// What buffers hold.
    const GstVideoInfo& Video() const { return mVideo; }
    /// The caps, which the caller owns.
    GstCaps* Caps() const { return gst_video_info_to_caps(&mVideo); }
    std::int64_t Count() const { return mFacts.frames; }

    /// When a frame is shown. `index` may be the number of frames: the duration.
    GstClockTime TimeOf(std::int64_t index) const;
    /// The frame that is shown at a time; the number of frames if all are over.
    std::int64_t FrameAt(GstClockTime time) const;

    /// A buffer of a frame with its times and flags, which the caller owns. It is the frame's own memory if
    /// GStreamer has the format, with a `GstVideoMeta` if rows are padded; these are copied without padding
    /// if `padded` is false.
    GstBuffer* Make(std::int64_t index, bool padded);

  private:
    enum class Way {
        kWrapped,  ///< the frame's memory
        kOpaque,   ///< a copy whose alpha, which means nothing, is full
        kConverted ///< R'G'B' of 16 bits
    };

    void ChooseFormat(const corvane_pixel_format& delivered);
    void DescribeVideo(const corvane_clip_info& info);
    GstBuffer* Wrap(handles::Frame frame, const corvane_plane& plane, bool padded) const;
    GstBuffer* Copy(const corvane_plane& plane);

    handles::Importer mImporter;
    handles::Clip mClip;
    StreamFacts mFacts; // as exports have them
    GstVideoFormat mFormat = GST_VIDEO_FORMAT_UNKNOWN;
    Way mWay = Way::kWrapped;
    GstVideoInfo mVideo{};
    std::unique_ptr<PackedReader> mReader; // of those that are converted
};

} // namespace corvane::gstreamer
