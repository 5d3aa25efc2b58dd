#include "Source.h"

#include <exception>
#include <new>

#include "Engine/Failure.h"

using corvane::gstreamer::ClipFrames;
using corvane::gstreamer::ClipOf;
using corvane::gstreamer::SourceState;
using corvane::gstreamer::StateOf;

struct _SynthexSrc {
    GstPushSrc parent;
    SourceState* state;
};

G_DEFINE_FINAL_TYPE(SynthexSrc, synthex_src, GST_TYPE_PUSH_SRC)

namespace {

enum Property : guint { kNone, kLocation, kSettings, kBundle, kIsLive };

std::string* TextOf(SourceState& state, guint property) {
    switch (property) {
    case kLocation: return &state.name.location;
    case kSettings: return &state.name.settings;
    case kBundle: return &state.name.bundle;
    default: return nullptr;
    }
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    if (id == kIsLive) return gst_base_src_set_live(GST_BASE_SRC(object), g_value_get_boolean(value));
    std::string* const text = TextOf(StateOf(SYNTHEX_SRC(object)), id);
    if (text == nullptr) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    const char* const given = g_value_get_string(value);
    GST_OBJECT_LOCK(object);
    *text = given == nullptr ? "" : given;
    GST_OBJECT_UNLOCK(object);
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    if (id == kIsLive) return g_value_set_boolean(value, gst_base_src_is_live(GST_BASE_SRC(object)));
    const std::string* const text = TextOf(StateOf(SYNTHEX_SRC(object)), id);
    if (text == nullptr) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    GST_OBJECT_LOCK(object);
    g_value_set_string(value, text->c_str());
    GST_OBJECT_UNLOCK(object);
}

void Keep(GstBaseSrc* base, std::shared_ptr<ClipFrames> clip) {
    GST_OBJECT_LOCK(base);
    StateOf(SYNTHEX_SRC(base)).clip.swap(clip);
    GST_OBJECT_UNLOCK(base);
}

gboolean Start(GstBaseSrc* base) {
    SourceState& state = StateOf(SYNTHEX_SRC(base));
    try {
        GST_OBJECT_LOCK(base);
        const corvane::gstreamer::ClipName name = state.name;
        GST_OBJECT_UNLOCK(base);
        Keep(base, std::make_shared<ClipFrames>(name));
    } catch (const std::exception& error) {
        GST_ELEMENT_ERROR(base, RESOURCE, OPEN_READ, ("%s", error.what()), (nullptr));
        return FALSE;
    }
    state.next = 0;
    state.backwards = false;
    base->segment.duration = static_cast<guint64>(state.clip->TimeOf(state.clip->Count()));
    return TRUE;
}

gboolean Stop(GstBaseSrc* base) {
    Keep(base, nullptr);
    return TRUE;
}

GstCaps* GetCaps(GstBaseSrc* base, GstCaps* filter) {
    const auto clip = ClipOf(base);
    GstCaps* const caps = clip ? clip->Caps() : corvane::gstreamer::SourceCaps();
    if (filter == nullptr) return caps;
    GstCaps* const both = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(caps);
    return both;
}

/// There is nothing to choose from, and some bins say that they take nothing before they know what comes.
gboolean Negotiate(GstBaseSrc* base) {
    const auto clip = ClipOf(base);
    if (!clip) return FALSE;
    GstCaps* const caps = clip->Caps();
    const gboolean taken = gst_base_src_set_caps(base, caps);
    gst_caps_unref(caps);
    return taken;
}

gboolean DecideAllocation(GstBaseSrc* base, GstQuery* query) {
    StateOf(SYNTHEX_SRC(base)).padded =
        gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return GST_BASE_SRC_CLASS(synthex_src_parent_class)->decide_allocation(base, query);
}

gboolean IsSeekable(GstBaseSrc* base) {
    return !gst_base_src_is_live(base);
}

gboolean DoSeek(GstBaseSrc* base, GstSegment* segment) {
    SourceState& state = StateOf(SYNTHEX_SRC(base));
    const auto clip = ClipOf(base);
    if (!clip) return FALSE;
    state.backwards = segment->rate < 0;
    // The base begins at the start then.
    if (state.backwards && segment->stop == GST_CLOCK_TIME_NONE)
        segment->stop = segment->position = clip->TimeOf(clip->Count());
    const std::int64_t at = clip->FrameAt(segment->position);
    // What is shown before the segment's end is the frame before, if a frame begins there.
    const bool begins = state.backwards && (at == clip->Count() || clip->TimeOf(at) == segment->position);
    state.next = begins ? at - 1 : at;
    return TRUE;
}

gboolean Query(GstBaseSrc* base, GstQuery* query) {
    const auto clip = ClipOf(base);
    if (clip && corvane::gstreamer::AnswerQuery(base, *clip, query)) return TRUE;
    return GST_BASE_SRC_CLASS(synthex_src_parent_class)->query(base, query);
}

void GetTimes(GstBaseSrc* base, GstBuffer* buffer, GstClockTime* start, GstClockTime* end) {
    *start = *end = GST_CLOCK_TIME_NONE;
    if (!gst_base_src_is_live(base)) return;
    *start = GST_BUFFER_PTS(buffer);
    *end = *start + GST_BUFFER_DURATION(buffer);
}

GstFlowReturn Create(GstPushSrc* source, GstBuffer** buffer) {
    SourceState& state = StateOf(SYNTHEX_SRC(source));
    if (state.next < 0 || state.next >= state.clip->Count()) return GST_FLOW_EOS;
    try {
        *buffer = state.clip->Make(state.next, state.padded);
    } catch (const std::exception& error) {
        GST_ELEMENT_ERROR(source, STREAM, FAILED, ("%s", error.what()), (nullptr));
        return GST_FLOW_ERROR;
    }
    state.next += state.backwards ? -1 : 1;
    return GST_FLOW_OK;
}

void Finalize(GObject* object) {
    delete SYNTHEX_SRC(object)->state;
    G_OBJECT_CLASS(synthex_src_parent_class)->finalize(object);
}

void AddText(GObjectClass* object, guint id, const char* name, const char* nick, const char* about) {
    const auto flags =
        static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY);
    g_object_class_install_property(object, id, g_param_spec_string(name, nick, about, nullptr, flags));
}

} // namespace

GstCaps* corvane::gstreamer::SourceCaps() {
    return gst_caps_from_string(GST_VIDEO_CAPS_MAKE("{ BGRA, BGRx, ARGB, xRGB, VUYA, RGBA64_LE }"));
}

SourceState& corvane::gstreamer::StateOf(SynthexSrc* source) {
    return *source->state;
}

std::shared_ptr<const ClipFrames> corvane::gstreamer::ClipOf(GstBaseSrc* base) {
    GST_OBJECT_LOCK(base);
    std::shared_ptr<const ClipFrames> clip = StateOf(SYNTHEX_SRC(base)).clip;
    GST_OBJECT_UNLOCK(base);
    return clip;
}

static void synthex_src_class_init(SynthexSrcClass* type) {
    auto* const object = G_OBJECT_CLASS(type);
    object->set_property = SetProperty;
    object->get_property = GetProperty;
    object->finalize = Finalize;
    AddText(object, kLocation, "location", "Location", "The settings file to open");
    AddText(object, kSettings, "settings", "Settings", "The text of a settings file, instead of a location");
    AddText(object, kBundle, "bundle", "Bundle", "The importer bundle; the installed one if it is not set");
    const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(
        object, kIsLive,
        g_param_spec_boolean("is-live", "Is live", "Whether frames come when it is their time, as a camera's",
                             FALSE, flags));

    auto* const element = GST_ELEMENT_CLASS(type);
    gst_element_class_set_static_metadata(element, "Synthex clip", "Source/Video",
                                          "Makes the frames of a .synthex clip", "Synthex");
    GstCaps* const caps = corvane::gstreamer::SourceCaps();
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    auto* const base = GST_BASE_SRC_CLASS(type);
    base->start = Start;
    base->stop = Stop;
    base->get_caps = GetCaps;
    base->negotiate = Negotiate;
    base->decide_allocation = DecideAllocation;
    base->is_seekable = IsSeekable;
    base->do_seek = DoSeek;
    base->query = Query;
    base->get_times = GetTimes;
    GST_PUSH_SRC_CLASS(type)->create = Create;
}

static void synthex_src_init(SynthexSrc* source) {
    source->state = new SourceState;
    gst_base_src_set_format(GST_BASE_SRC(source), GST_FORMAT_TIME);
}
