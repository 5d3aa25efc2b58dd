#pragma once

#include <map>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "Export/Targets/LibavLoader.h"

namespace corvane {

/// A codec as asked for: NAME[:option=value[:option=value...]].
struct CodecChoice {
    const AVCodec* codec = nullptr;
    /// Options of the encoder by name. `pix_fmt` and `threads` are meant as ffmpeg means them.
    std::map<std::string, std::string> options;

    /// Takes the option out and returns its value; empty if there is none.
    std::string Take(const std::string& option);
};

/// The container for a suffix or a name of libav. Throws `UsageFailure` if there is none, or if it does not
/// hold video in one file. Any thread.
const AVOutputFormat* ContainerFor(const LibavRequest& request);

/// Whether it is MOV, or a container that is built like it. Any thread.
bool IsQuickTimeFamily(const AVOutputFormat& container);

/// The encoder that `text` names, with its options. For names of `ExportCodecs` it is their encoder, if this
/// libav has it. Throws `UsageFailure` if there is no such codec, and for options that are not written as
/// such. Any thread.
CodecChoice ParseCodec(const std::string& text);

/// The encoder that was asked for, or the default of the container: that of its `ExportKind`, else libav's.
/// Throws as `ParseCodec` does, and `UsageFailure` if the container can't carry it. Any thread.
CodecChoice CodecFor(const LibavRequest& request, const AVOutputFormat& container);

} // namespace corvane
