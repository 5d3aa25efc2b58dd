#pragma once

#include <atomic>
#include <memory>

#include <gst/base/gstpushsrc.h>

#include "ClipFrames.h"

G_BEGIN_DECLS

/// `synthexsrc`: the frames of a clip as raw video, live or not, seekable in time and by frame.
G_DECLARE_FINAL_TYPE(SynthexSrc, synthex_src, SYNTHEX, SRC, GstPushSrc)

G_END_DECLS

namespace corvane::gstreamer {

/// What a source has beside its base.
struct SourceState {
    ClipName name;                    ///< properties; under the object's lock
    std::unique_ptr<ClipFrames> clip; ///< from start to stop
    std::int64_t next = 0;  ///< the frame that is made next: streaming thread, and seeks while it rests
    bool backwards = false; ///< set by seeks, too
    std::atomic<bool> padded{false}; ///< whether downstream takes rows with gaps
};

/// The state of a source. Lives as long as it.
SourceState& StateOf(SynthexSrc* source);

/// Answers queries of duration, position, seeking and conversion in time and in frames; false for others.
/// Any thread between start and stop.
bool AnswerQuery(GstBaseSrc* base, const ClipFrames& clip, GstQuery* query);

/// The caps of all that sources can make. The caller owns it.
GstCaps* SourceCaps();

} // namespace corvane::gstreamer
