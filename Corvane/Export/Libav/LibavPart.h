#pragma once

#include <filesystem>
#include <memory>

#include "LibavError.h"
#include "LibavFree.h"

namespace corvane {

/// The packets of a part of an export, as they were encoded. One thread at a time. All of it throws
/// `Failure`, which names the part, and `std::bad_alloc`.
class LibavPart {
  public:
    /// Opens the file of the part, which must be of the codec and size of `encoder`. `log` outlives the part.
    LibavPart(const std::filesystem::path& file, const AVCodecContext& encoder, const LibavLog& log);

    /// Reads the next packet. Returns false at the end.
    bool Next(AVPacket& packet);

  private:
    struct Close {
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    };

    const std::filesystem::path mFile;
    const LibavLog& mLog;
    std::unique_ptr<AVFormatContext, Close> mContext;
};

} // namespace corvane
