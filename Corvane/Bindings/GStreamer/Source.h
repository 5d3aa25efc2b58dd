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
    ClipName name; ///< properties; under the object's lock
    /// From start to stop; changed under the object's lock. Other threads than the streaming one take
    /// `ClipOf`.
    std::shared_ptr<ClipFrames> clip;
    std::int64_t next = 0;  ///< the frame that is made next: streaming thread, and seeks while it rests
    bool backwards = false; ///< set by seeks, too
    std::atomic<bool> padded{false}; ///< whether downstream takes rows with gaps
};

/// The state of a source. Lives as long as it.
SourceState& StateOf(SynthexSrc* source);

/// The clip of a source, which a stop leaves alone meanwhile; null if it has not started. Any thread.
std::shared_ptr<const ClipFrames> ClipOf(GstBaseSrc* base);

/// Answers queries of duration, position, seeking and conversion in time and in frames, and of latency; false
/// for others. Any thread.
bool AnswerQuery(GstBaseSrc* base, const ClipFrames& clip, GstQuery* query);

/// The caps of all that sources can make. The caller owns it.
GstCaps* SourceCaps();

} // namespace corvane::gstreamer
