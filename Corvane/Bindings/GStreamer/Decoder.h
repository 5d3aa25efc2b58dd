#pragma once

#include <gst/gst.h>

G_BEGIN_DECLS

/// `synthexdec`: takes a settings file as a stream of bytes, and shows its clip. So players and editors that
/// choose their elements by the kind of a file open clips like any video.
G_DECLARE_FINAL_TYPE(SynthexDec, synthex_dec, SYNTHEX, DEC, GstBin)

G_END_DECLS

namespace corvane::gstreamer {

/// The kind of settings files, as desktops know it, too.
inline constexpr const char* kSettingsType = "application/vnd.synthex.settings+json";
/// The most bytes that a settings file may have.
inline constexpr gsize kMostSettings = 1 << 20;

/// Makes GStreamer find that kind by a file's name and by what it holds.
gboolean RegisterSettingsType(GstPlugin* plugin);

} // namespace corvane::gstreamer
