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

    /// The option's value, which is taken out; empty where there is none.
    std::string Take(const std::string& option);
};

/// The container for a suffix or a name of libav. Throws `UsageFailure` for an unknown one and for one that
/// is not one file.
const AVOutputFormat* ContainerFor(const LibavRequest& request);

/// The encoder: the one asked for, or the container's default here (H.264 in MP4, MOV and MKV). `h264` is
/// libx264 and `prores` prores_ks. Throws `UsageFailure` for an unknown one and for one that the container
/// can't carry.
CodecChoice CodecFor(const LibavRequest& request, const AVOutputFormat& container);

} // namespace corvane
