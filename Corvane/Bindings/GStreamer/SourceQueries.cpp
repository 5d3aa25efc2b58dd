#include "Engine/Failure.h"
#include "Source.h"

namespace corvane::gstreamer {

namespace {

/// Converts between frames (GStreamer's default format) and time. Returns whether it can be done.
bool Convert(const ClipFrames& clip, GstFormat from, gint64 value, GstFormat to, gint64& result) {
    result = value;
    if (from == to || value == -1) return true;
    if (value < 0) return false;
    if (from == GST_FORMAT_DEFAULT && to == GST_FORMAT_TIME)
        result = static_cast<gint64>(clip.TimeOf(value));
    else if (from == GST_FORMAT_TIME && to == GST_FORMAT_DEFAULT)
        result = clip.FrameAt(static_cast<GstClockTime>(value));
    else
        return false;
    return true;
}

bool AnswerDuration(const ClipFrames& clip, GstQuery* query) {
    GstFormat format = GST_FORMAT_UNDEFINED;
    gst_query_parse_duration(query, &format, nullptr);
    gint64 duration = 0;
    if (!Convert(clip, GST_FORMAT_DEFAULT, clip.Count(), format, duration)) return false;
    gst_query_set_duration(query, format, duration);
    return true;
}

bool AnswerSeeking(GstBaseSrc* base, const ClipFrames& clip, GstQuery* query) {
    GstFormat format = GST_FORMAT_UNDEFINED;
    gst_query_parse_seeking(query, &format, nullptr, nullptr, nullptr);
    gint64 end = 0;
    if (!Convert(clip, GST_FORMAT_DEFAULT, clip.Count(), format, end)) return false;
    gst_query_set_seeking(query, format, !gst_base_src_is_live(base), 0, end);
    return true;
}

bool AnswerConversion(const ClipFrames& clip, GstQuery* query) {
    GstFormat from = GST_FORMAT_UNDEFINED, to = GST_FORMAT_UNDEFINED;
    gint64 value = 0, result = 0;
    gst_query_parse_convert(query, &from, &value, &to, nullptr);
    if (!Convert(clip, from, value, to, result)) return false;
    gst_query_set_convert(query, from, value, to, result);
    return true;
}

bool AnswerPosition(GstBaseSrc* base, const ClipFrames& clip, GstQuery* query) {
    GstFormat format = GST_FORMAT_UNDEFINED;
    gst_query_parse_position(query, &format, nullptr);
    GST_OBJECT_LOCK(base);
    const auto time = static_cast<gint64>(
        gst_segment_to_stream_time(&base->segment, GST_FORMAT_TIME, base->segment.position));
    GST_OBJECT_UNLOCK(base);
    gint64 position = 0;
    if (!Convert(clip, GST_FORMAT_TIME, time, format, position)) return false;
    gst_query_set_position(query, format, position);
    return true;
}

/// A live frame may take as long as it is shown to be made.
bool AnswerLatency(GstBaseSrc* base, const ClipFrames& clip, GstQuery* query) {
    const bool live = gst_base_src_is_live(base);
    gst_query_set_latency(query, live, live ? clip.TimeOf(1) : 0, GST_CLOCK_TIME_NONE);
    return true;
}

} // namespace

bool AnswerQuery(GstBaseSrc* base, const ClipFrames& clip, GstQuery* query) {
    switch (GST_QUERY_TYPE(query)) {
    case GST_QUERY_DURATION: return AnswerDuration(clip, query);
    case GST_QUERY_SEEKING: return AnswerSeeking(base, clip, query);
    case GST_QUERY_CONVERT: return AnswerConversion(clip, query);
    case GST_QUERY_POSITION: return AnswerPosition(base, clip, query);
    case GST_QUERY_LATENCY: return AnswerLatency(base, clip, query);
    default: return false;
    }
}

} // namespace corvane::gstreamer
