#include "Decoder.h"
#include "Source.h"

namespace {

gboolean Register(GstPlugin* plugin) {
    return gst_element_register(plugin, "synthexsrc", GST_RANK_NONE, synthex_src_get_type()) &&
           gst_element_register(plugin, "synthexdec", GST_RANK_PRIMARY, synthex_dec_get_type()) &&
           corvane::gstreamer::RegisterSettingsType(plugin);
}

} // namespace

#define PACKAGE "synthex"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, synthex, "Synthetic clips, exact to the byte",
                  Register, SYNTHEX_VERSION, GST_LICENSE_UNKNOWN, "Synthex", "org.synthex")
