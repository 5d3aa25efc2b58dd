#include "Decoder.h"

#include <string>

#include "Engine/SettingsText.h"
#include "Source.h"

using namespace corvane::gstreamer;

struct _SynthexDec {
    GstBin parent;
    std::string* text; // what came so far: the streaming thread's
};

G_DEFINE_FINAL_TYPE(SynthexDec, synthex_dec, GST_TYPE_BIN)

namespace {

GstFlowReturn Take(GstPad*, GstObject* parent, GstBuffer* buffer) {
    std::string& text = *SYNTHEX_DEC(parent)->text;
    GstMapInfo map;
    const bool mapped = gst_buffer_map(buffer, &map, GST_MAP_READ);
    if (mapped) {
        text.append(reinterpret_cast<const char*>(map.data), map.size);
        gst_buffer_unmap(buffer, &map);
    }
    gst_buffer_unref(buffer);
    if (mapped && text.size() <= kMostSettings) return GST_FLOW_OK;
    GST_ELEMENT_ERROR(parent, STREAM, DECODE,
                      ("Settings have at most %" G_GSIZE_FORMAT " bytes.", kMostSettings), (nullptr));
    return GST_FLOW_ERROR;
}

/// The file that comes, or where else it comes from, if somebody knows.
std::string NameOfStream(GstPad* sink) {
    gchar* uri = nullptr;
    GstQuery* const query = gst_query_new_uri();
    if (gst_pad_peer_query(sink, query)) gst_query_parse_uri(query, &uri);
    gst_query_unref(query);
    if (uri == nullptr) return "settings";
    gchar* const path = g_filename_from_uri(uri, nullptr, nullptr);
    std::string name = path != nullptr ? path : uri;
    g_free(path);
    g_free(uri);
    return name;
}

/// Shows the clip whose settings came. It begins as if nothing had come before.
bool Show(SynthexDec* decoder, GstPad* sink) {
    auto* const source =
        GST_ELEMENT(g_object_new(synthex_src_get_type(), "settings", decoder->text->c_str(), nullptr));
    StateOf(SYNTHEX_SRC(source)).name.title = NameOfStream(sink);
    decoder->text->clear();
    gst_bin_add(GST_BIN(decoder), source);
    // Errors of the source are told by itself, as this element's.
    if (gst_element_set_state(source, GST_STATE_READY) == GST_STATE_CHANGE_FAILURE) return false;
    GstPad* const inner = gst_element_get_static_pad(source, "src");
    GstPadTemplate* const pads = gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(decoder), "src");
    GstPad* const outer = gst_ghost_pad_new_from_template("src", inner, pads);
    gst_object_unref(inner);
    gst_pad_set_active(outer, TRUE);
    gst_element_add_pad(GST_ELEMENT(decoder), outer);
    gst_element_no_more_pads(GST_ELEMENT(decoder));
    return gst_element_sync_state_with_parent(source);
}

gboolean Hear(GstPad* pad, GstObject* parent, GstEvent* event) {
    auto* const decoder = SYNTHEX_DEC(parent);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_EOS:
        gst_event_unref(event);
        // A clip is shown to the end, whatever comes meanwhile.
        return GST_BIN_NUMCHILDREN(decoder) > 0 || Show(decoder, pad);
    case GST_EVENT_FLUSH_STOP: decoder->text->clear(); [[fallthrough]];
    case GST_EVENT_CAPS:
    case GST_EVENT_SEGMENT:
    case GST_EVENT_STREAM_START:
    case GST_EVENT_TAG:
    case GST_EVENT_FLUSH_START:
        // They are of the bytes and not of the clip, whose source makes its own.
        gst_event_unref(event);
        return TRUE;
    default: return gst_pad_event_default(pad, parent, event);
    }
}

GstStateChangeReturn Change(GstElement* element, GstStateChange transition) {
    const auto result = GST_ELEMENT_CLASS(synthex_dec_parent_class)->change_state(element, transition);
    if (transition != GST_STATE_CHANGE_PAUSED_TO_READY) return result;
    auto* const decoder = SYNTHEX_DEC(element);
    decoder->text->clear();
    if (GstPad* const outer = gst_element_get_static_pad(element, "src"); outer != nullptr) {
        gst_element_remove_pad(element, outer);
        gst_object_unref(outer);
    }
    while (GST_BIN_NUMCHILDREN(element) > 0) {
        auto* const source = GST_ELEMENT(GST_BIN_CHILDREN(element)->data);
        gst_element_set_state(source, GST_STATE_NULL);
        gst_bin_remove(GST_BIN(element), source);
    }
    return result;
}

void FinalizeDecoder(GObject* object) {
    delete SYNTHEX_DEC(object)->text;
    G_OBJECT_CLASS(synthex_dec_parent_class)->finalize(object);
}

/// Whether a file begins as one of settings does: an object with one of their keys.
void FindType(GstTypeFind* find, gpointer) {
    constexpr guint kLook = 4096;
    guint size = kLook;
    const guint8* bytes = nullptr;
    while (size > 0 && (bytes = gst_type_find_peek(find, 0, size)) == nullptr) size /= 2;
    if (bytes == nullptr) return;
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos || text[begin] != '{') return;
    static const std::string sKeys = corvane::WriteSettings({});
    for (std::size_t at = text.find("\"m"); at != std::string_view::npos; at = text.find("\"m", at + 1)) {
        const std::string word(text.substr(at, text.find('"', at + 1) - at));
        if (sKeys.find(word + "\":") != std::string::npos)
            return gst_type_find_suggest_empty_simple(find, GST_TYPE_FIND_MAXIMUM, kSettingsType);
    }
}

} // namespace

gboolean corvane::gstreamer::RegisterSettingsType(GstPlugin* plugin) {
    GstCaps* const caps = gst_caps_new_empty_simple(kSettingsType);
    const gboolean done = gst_type_find_register(plugin, kSettingsType, GST_RANK_PRIMARY, FindType, "synthex",
                                                 caps, nullptr, nullptr);
    gst_caps_unref(caps);
    return done;
}

static void synthex_dec_class_init(SynthexDecClass* type) {
    G_OBJECT_CLASS(type)->finalize = FinalizeDecoder;
    auto* const element = GST_ELEMENT_CLASS(type);
    element->change_state = Change;
    gst_element_class_set_static_metadata(element, "Synthex settings decoder", "Codec/Demuxer",
                                          "Shows the clip of a .synthex file", "Synthex");
    GstCaps* const settings = gst_caps_new_empty_simple(kSettingsType);
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, settings));
    gst_caps_unref(settings);
    GstCaps* const video = SourceCaps();
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_SOMETIMES, video));
    gst_caps_unref(video);
}

static void synthex_dec_init(SynthexDec* decoder) {
    decoder->text = new std::string;
    // Bins around it, which look only when it is added, hand on what ends the stream early.
    GST_OBJECT_FLAG_SET(decoder, GST_ELEMENT_FLAG_SOURCE);
    GstPadTemplate* const pads = gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(decoder), "sink");
    GstPad* const sink = gst_pad_new_from_template(pads, "sink");
    gst_pad_set_chain_function(sink, Take);
    gst_pad_set_event_function(sink, Hear);
    gst_element_add_pad(GST_ELEMENT(decoder), sink);
}
